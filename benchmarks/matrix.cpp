// What 4x4 matrices cost beside Imath, glm and Eigen.
//
// Each table is an operation over 1000 matrices that fit the cache, 200 times in a row, with results written to memory.
// The matrices are affine and turn, scale and shear by random numbers. Imath's rows are rows as ours; the columns of
// glm and Eigen are our rows, so that their factors change places. Imath has two inverses, of which gjInverse
// eliminates with pivots as ours does. All results are checked against long double.
//
// One table alone: --benchmark_filter=double.product

#include "benchmarks/Geometry.h"

namespace {

constexpr std::size_t kMatrices = 1000;
constexpr int kTimes = 200;

// The operations of each library, on values of its own type over the same 16 numbers in memory.

template <class R>
struct Ours
{
  using Real = R;
  using Matrix = TmatrixOf<Real>;
  static constexpr const char* kName = "Foundation";
  static Matrix product(const Matrix& a, const Matrix& b) { return a * b; }
  static Matrix affine(const Matrix& a, const Matrix& b)
  {
    Matrix product;
    if constexpr (sizeof(Real) == 8)
      product.affineProduct(a, b);
    return product;
  }
  static Matrix inverse(const Matrix& a) { return a.inverse(); }
  static Matrix fastInverse(const Matrix& a) { return a.fastInverse(); }
  static Matrix transpose(const Matrix& a) { return a.transpose(); }
  static Real determinant(const Matrix& a) { return a.det4x4(); }
};

template <class R>
struct OfImath
{
  using Real = R;
  using Matrix = Imath::Matrix44<Real>;
  static constexpr const char* kName = "Imath";
  static Matrix product(const Matrix& a, const Matrix& b) { return a * b; }
  static Matrix affine(const Matrix& a, const Matrix& b) { return a * b; }
  static Matrix inverse(const Matrix& a) { return a.inverse(); }
  static Matrix fastInverse(const Matrix& a) { return a.inverse(); }
  static Matrix transpose(const Matrix& a) { return a.transposed(); }
  static Real determinant(const Matrix& a) { return a.determinant(); }
};

template <class R>
struct ImathEliminating : OfImath<R>
{
  static constexpr const char* kName = "Imath gj";
  static typename OfImath<R>::Matrix inverse(const typename OfImath<R>::Matrix& a) { return a.gjInverse(); }
};

template <class R>
struct OfGlm
{
  using Real = R;
  using Matrix = glm::mat<4, 4, Real>;
  static constexpr const char* kName = "glm";
  static Matrix product(const Matrix& a, const Matrix& b) { return b * a; }
  static Matrix affine(const Matrix& a, const Matrix& b) { return b * a; }
  static Matrix inverse(const Matrix& a) { return glm::inverse(a); }
  static Matrix fastInverse(const Matrix& a) { return glm::inverse(a); }
  static Matrix transpose(const Matrix& a) { return glm::transpose(a); }
  static Real determinant(const Matrix& a) { return glm::determinant(a); }
};

template <class R>
struct OfEigen
{
  using Real = R;
  using Matrix = Eigen::Matrix<Real, 4, 4>;
  static constexpr const char* kName = "Eigen";
  static Matrix product(const Matrix& a, const Matrix& b) { return b * a; }
  static Matrix affine(const Matrix& a, const Matrix& b)
  {
    using Affine = Eigen::Transform<Real, 3, Eigen::Affine>;
    return (reinterpret_cast<const Affine&>(b) * reinterpret_cast<const Affine&>(a)).matrix();
  }
  static Matrix inverse(const Matrix& a) { return a.inverse(); }
  static Matrix fastInverse(const Matrix& a) { return a.inverse(); }
  static Matrix transpose(const Matrix& a) { return a.transpose(); }
  static Real determinant(const Matrix& a) { return a.determinant(); }
};

std::vector<Case> gCases;
std::vector<Aim> gAims;

// Memory of one library's matrices, filled with the numbers that all get. All libraries' lie alike in cache lines and
// pages, which costs more or less than the arithmetic.
template <class Library>
struct alignas(4096) Data
{
  using Matrix = typename Library::Matrix;
  Matrix a[kMatrices], b[kMatrices], to[kMatrices];

  Data()
  {
    static_assert(sizeof(Matrix) == 16 * sizeof(typename Library::Real));
    Numbers<typename Library::Real> numbers;
    for (std::size_t i = 0; i < kMatrices; ++i)
    {
      for (Matrix* matrix : {&a[i], &b[i]})
      {
        auto* m = reinterpret_cast<typename Library::Real*>(matrix);
        for (int k = 0; k < 16; ++k)
          m[k] = k % 4 == 3 ? k == 15 : numbers() + (k % 5 == 0 ? 3 : 0); // a strong diagonal: well conditioned
      }
    }
  }
};

// A table's row or column: operation(data, i) writes into to[i]; reference(a, b, result) is for long double.
template <class Library, class Operation, class Expected>
void add(const std::string& table, int count, Operation operation, Expected reference)
{
  using Real = typename Library::Real;
  const std::string precision = sizeof(Real) == 8 ? "double." : "float.";
  const bool ours = Library::kName == std::string("Foundation");
  const auto data = std::make_shared<Data<Library>>();
  gCases.push_back({precision + table, Library::kName, ours, 1, [=] {
                      const double time = seconds([&] {
                        for (int again = 0; again < kTimes; ++again)
                        {
                          for (std::size_t i = 0; i < kMatrices; ++i)
                            operation(data->a[i], data->b[i], data->to[i]);
                          makeKnown(data->to);
                        }
                      });
                      for (std::size_t i = 0; i < kMatrices; ++i)
                      {
                        long double a[16], b[16], expected[16];
                        std::copy_n(reinterpret_cast<const Real*>(&data->a[i]), 16, a);
                        std::copy_n(reinterpret_cast<const Real*>(&data->b[i]), 16, b);
                        reference(a, b, expected);
                        check(precision + table + " of " + Library::kName, reinterpret_cast<const Real*>(&data->to[i]),
                              expected, count, 50);
                      }
                      return time;
                    }});
  if (!ours)
    gAims.push_back({precision + table, "Foundation", Library::kName, 1.0});
}

void multiply(const long double* a, const long double* b, long double* c)
{
  for (int i = 0; i < 16; ++i)
    c[i] = a[i / 4 * 4] * b[i % 4] + a[i / 4 * 4 + 1] * b[4 + i % 4] + a[i / 4 * 4 + 2] * b[8 + i % 4] +
           a[i / 4 * 4 + 3] * b[12 + i % 4];
}

// Gauss and Jordan without pivots, which a strong diagonal does not need; returns the determinant.
long double invert(const long double* a, long double* inverse)
{
  long double m[16], determinant = 1;
  std::copy_n(a, 16, m);
  for (int i = 0; i < 16; ++i)
    inverse[i] = i % 5 == 0;
  for (int j = 0; j < 4; ++j)
  {
    const long double pivot = m[5 * j];
    determinant *= pivot;
    for (int k = 0; k < 4; ++k)
    {
      m[4 * j + k] /= pivot;
      inverse[4 * j + k] /= pivot;
    }
    for (int i = 0; i < 4; ++i)
    {
      const long double factor = i == j ? 0 : m[4 * i + j];
      for (int k = 0; k < 4; ++k)
      {
        m[4 * i + k] -= factor * m[4 * j + k];
        inverse[4 * i + k] -= factor * inverse[4 * j + k];
      }
    }
  }
  return determinant;
}

template <class Library>
void addLibrary()
{
  const auto inverse = [](const long double* a, const long double*, long double* c) { invert(a, c); };
  if (std::is_base_of_v<ImathEliminating<typename Library::Real>, Library>)
    return add<Library>(
      "inverse", 16, [](const auto& a, auto&, auto& c) { c = Library::inverse(a); }, inverse);
  add<Library>(
    "product", 16, [](const auto& a, const auto& b, auto& c) { c = Library::product(a, b); }, multiply);
  if (sizeof(typename Library::Real) == 8)
    add<Library>(
      "affine", 16, [](const auto& a, const auto& b, auto& c) { c = Library::affine(a, b); }, multiply);
  add<Library>(
    "inverse", 16, [](const auto& a, auto&, auto& c) { c = Library::inverse(a); }, inverse);
  add<Library>(
    "fast inverse", 16, [](const auto& a, auto&, auto& c) { c = Library::fastInverse(a); }, inverse);
  add<Library>(
    "transpose", 16, [](const auto& a, auto&, auto& c) { c = Library::transpose(a); },
    [](const long double* a, const long double*, long double* c) {
      for (int i = 0; i < 16; ++i)
        c[i] = a[i % 4 * 4 + i / 4];
    });
  add<Library>(
    "determinant", 1,
    [](const auto& a, auto&, auto& c) { *reinterpret_cast<typename Library::Real*>(&c) = Library::determinant(a); },
    [](const long double* a, const long double*, long double* c) {
      long double unused[16];
      *c = invert(a, unused);
    });
}

template <class Real>
void addPrecision()
{
  addLibrary<Ours<Real>>();
  addLibrary<OfImath<Real>>();
  addLibrary<ImathEliminating<Real>>();
  addLibrary<OfGlm<Real>>();
  addLibrary<OfEigen<Real>>();
}

} // namespace

int main(int argc, char** argv)
{
  addPrecision<double>();
  addPrecision<float>();
  return runRatios(argc, argv, gCases, gAims);
}
