// What 1,000,000 points and vectors cost beside Imath, glm and Eigen.
//
// "point" and "vector" are products with an affine matrix, "normal" normalises vectors: ours one by one and in bulk,
// the peers one by one, and Eigen in bulk too. "memcpy" copies the same bytes. "cache" has 1000 points instead, which
// memory does not slow down. All results are checked against long double.
//
// One table alone: --benchmark_filter=double.point

#include "Foundation/Math/TpointStream.h"
#include "benchmarks/Geometry.h"

#include <Imath/ImathVec.h>
#include <glm/geometric.hpp>

#include <cstring>

namespace {

std::vector<Case> gCases;
std::vector<Aim> gAims;

// count times 3 numbers from and to memory, and the 16 of a matrix.
template <class Real>
struct Data
{
  std::vector<Real> from, to;
  Real matrix[16];

  explicit Data(std::size_t count)
    : from(3 * count)
    , to(3 * count)
  {
    Numbers<Real> numbers;
    for (Real& number : from)
      number = numbers();
    for (int i = 0; i < 16; ++i)
      matrix[i] = i % 4 == 3 ? i == 15 : numbers();
  }
  template <class Value>
  const Value* source() const
  {
    return reinterpret_cast<const Value*>(from.data());
  }
  template <class Value>
  Value* target()
  {
    return reinterpret_cast<Value*>(to.data());
  }
};

enum Kind
{
  kPoint,
  kVector,
  kNormal,
  kCopy
};

template <class Real>
void checkAll(const std::string& what, const Data<Real>& data, Kind kind)
{
  const Real* m = data.matrix;
  for (std::size_t i = 0; i < data.from.size(); i += 3)
  {
    const long double x = data.from[i], y = data.from[i + 1], z = data.from[i + 2];
    long double expected[3] = {x, y, z};
    for (int j = 0; j < 3; ++j)
    {
      if (kind == kNormal)
        expected[j] /= std::sqrt(x * x + y * y + z * z);
      else if (kind != kCopy)
        expected[j] = x * m[j] + y * m[4 + j] + z * m[8 + j] + (kind == kPoint ? m[12 + j] : 0);
    }
    check(what, &data.to[i], expected, 3);
  }
}

template <class Real, class Run>
void add(Kind kind, std::size_t count, const char* name, bool ours, Run run)
{
  const char* const kinds[] = {"point", "vector", "normal"};
  const std::string table =
    std::string(sizeof(Real) == 8 ? "double." : "float.") + kinds[kind] + (count < 10000 ? ".cache" : "");
  const auto data = std::make_shared<Data<Real>>(count);
  // Memory that was left alone is slow at first, and not equally so for all: it is passed over ten times in a row.
  const std::size_t million = 1000000 / count, times = count < 10000 ? million : 10 * million;
  gCases.push_back({table, name, ours, 3, [=] {
                      const double time = seconds([&] {
                        for (std::size_t i = 0; i < times; ++i)
                        {
                          run(*data, count);
                          makeKnown(data->to.data());
                        }
                      });
                      // memcpy's results, too: the pause that this makes is the same for all.
                      checkAll(table + " " + name, *data, std::strcmp(name, "memcpy") == 0 ? kCopy : kind);
                      return time * double(million) / double(times);
                    }});
  const bool isBulk = std::strcmp(name, "Eigen bulk") == 0 || std::strcmp(name, "memcpy") == 0;
  if (!ours)
    gAims.push_back({table, isBulk ? "bulk" : "one by one", name, 1.0});
}

// operation(value) for each of them, one after the other.
template <class Value, class Real, class Operation>
void addEach(Kind kind, std::size_t count, const char* name, bool ours, Operation operation)
{
  add<Real>(kind, count, name, ours, [operation](Data<Real>& data, std::size_t size) {
    const Value* const from = data.template source<Value>();
    Value* const to = data.template target<Value>();
    const auto bound = operation(data.matrix);
    for (std::size_t i = 0; i < size; ++i)
      to[i] = bound(from[i]);
  });
}

template <class Real>
void addPrecision(std::size_t count)
{
  using Matrix = TmatrixOf<Real>;
  using Point = Tpoint3Of<Real>;
  using Vector = TvectorOf<Real>;
  using ImathVec = Imath::Vec3<Real>;
  using GlmVec = glm::vec<3, Real>;
  using EigenVec = Eigen::Matrix<Real, 3, 1>;
  using EigenAffine = Eigen::Transform<Real, 3, Eigen::Affine>;
  const auto matrixOf = [](const Real* numbers) {
    Matrix m;
    std::copy_n(numbers, 16, m.array());
    return m;
  };
  const auto imathOf = [](const Real* numbers) { return *reinterpret_cast<const Imath::Matrix44<Real>*>(numbers); };
  const auto glmOf = [](const Real* numbers) { return *reinterpret_cast<const glm::mat<4, 4, Real>*>(numbers); };
  const auto eigenOf = [](const Real* numbers) {
    return EigenAffine(Eigen::Map<const Eigen::Matrix<Real, 4, 4>>(numbers));
  };

  for (const Kind kind : {kPoint, kVector})
  {
    if (count > 10000)
      add<Real>(kind, count, "memcpy", false, [](Data<Real>& data, std::size_t) {
        std::memcpy(data.to.data(), data.from.data(), data.to.size() * sizeof(Real));
      });
  }

  addEach<Point, Real>(kPoint, count, "one by one", true,
                       [=](const Real* numbers) { return [m = matrixOf(numbers)](const Point& p) { return p * m; }; });
  addEach<Vector, Real>(kVector, count, "one by one", true, [=](const Real* numbers) {
    return [m = matrixOf(numbers)](const Vector& v) { return v * m; };
  });
  addEach<Vector, Real>(kNormal, count, "one by one", true,
                        [](const Real*) { return [](const Vector& v) { return v.normal(); }; });
  add<Real>(kPoint, count, "bulk", true, [=](Data<Real>& data, std::size_t size) {
    TpointStream::transform(data.template source<Point>(), data.template target<Point>(), size, matrixOf(data.matrix));
  });
  add<Real>(kVector, count, "bulk", true, [=](Data<Real>& data, std::size_t size) {
    TpointStream::transform(data.template source<Vector>(), data.template target<Vector>(), size,
                            matrixOf(data.matrix));
  });
  add<Real>(kNormal, count, "bulk", true, [](Data<Real>& data, std::size_t size) {
    TpointStream::normalize(data.template source<Vector>(), data.template target<Vector>(), size);
  });

  addEach<ImathVec, Real>(kPoint, count, "Imath", false, [=](const Real* numbers) {
    return [m = imathOf(numbers)](const ImathVec& v) { return v * m; };
  });
  addEach<ImathVec, Real>(kVector, count, "Imath", false, [=](const Real* numbers) {
    return [m = imathOf(numbers)](const ImathVec& v) {
      ImathVec result;
      m.multDirMatrix(v, result);
      return result;
    };
  });
  addEach<ImathVec, Real>(kNormal, count, "Imath", false,
                          [](const Real*) { return [](const ImathVec& v) { return v.normalized(); }; });

  addEach<GlmVec, Real>(kPoint, count, "glm", false, [=](const Real* numbers) {
    return [m = glmOf(numbers)](const GlmVec& v) { return GlmVec(m * glm::vec<4, Real>(v, 1)); };
  });
  addEach<GlmVec, Real>(kVector, count, "glm", false, [=](const Real* numbers) {
    return [m = glm::mat<3, 3, Real>(glmOf(numbers))](const GlmVec& v) { return m * v; };
  });
  addEach<GlmVec, Real>(kNormal, count, "glm", false,
                        [](const Real*) { return [](const GlmVec& v) { return glm::normalize(v); }; });

  addEach<EigenVec, Real>(kPoint, count, "Eigen", false, [=](const Real* numbers) {
    return [m = eigenOf(numbers)](const EigenVec& v) -> EigenVec { return m * v; };
  });
  addEach<EigenVec, Real>(kVector, count, "Eigen", false, [=](const Real* numbers) {
    return [m = eigenOf(numbers)](const EigenVec& v) -> EigenVec { return m.linear() * v; };
  });
  addEach<EigenVec, Real>(kNormal, count, "Eigen", false,
                          [](const Real*) { return [](const EigenVec& v) -> EigenVec { return v.normalized(); }; });
  using Columns = Eigen::Matrix<Real, 3, Eigen::Dynamic>;
  for (const Kind kind : {kPoint, kVector})
    add<Real>(kind, count, "Eigen bulk", false, [=](Data<Real>& data, std::size_t size) {
      const EigenAffine m = eigenOf(data.matrix);
      const Eigen::Map<const Columns> from(data.from.data(), 3, Eigen::Index(size));
      Eigen::Map<Columns> to(data.to.data(), 3, Eigen::Index(size));
      if (kind == kPoint)
        to = (m.linear().lazyProduct(from)).colwise() + m.translation();
      else
        to = m.linear().lazyProduct(from);
    });
}

} // namespace

int main(int argc, char** argv)
{
  for (const std::size_t count : {1000000, 1000})
  {
    addPrecision<double>(count);
    addPrecision<float>(count);
  }
  return runRatios(argc, argv, gCases, gAims);
}
