// What a value of any kind costs: Tdata beside std::variant<double, int>, std::any, boost::any and QVariant.
//
// Numbers: 10,000 values in random order are constructed and destroyed, copied (to where nothing was) and destroyed,
// assigned, added up two at a time, or compared. Letters: a handle on one of 100 matrices is copied and destroyed,
// where the peers hold the matrix or share it; a new tuple of three numbers is created, held and destroyed. "heap"
// deletes one of 1,000 handles, drawn at random, and makes a new one in its place. What comes out is counted and
// compared.
//
// One table alone: --benchmark_filter=number.copy/

#include "Foundation/Data/Tdata.h"
#include "Foundation/Data/TdataMatrix.h"
#include "Foundation/Data/TdataTuple.h"
#include "benchmarks/Keyed.h"

#include <QVariant>
#include <boost/any.hpp>

#include <any>
#include <array>
#include <numeric>
#include <variant>

using Triple = std::array<double, 3>;
Q_DECLARE_METATYPE(T4dDblMatrix)
Q_DECLARE_METATYPE(Triple)

namespace {

constexpr std::size_t kValues = 10000;

std::vector<Case> gCases;
std::vector<Aim> gAims;

// The compiler takes it that others know the value and may have changed it.
template <class Value>
void makeKnown(Value& value)
{
  asm volatile("" : : "r"(&value) : "memory");
}

// How a number is read from each kind of value.
using Variant = std::variant<double, int>;
double numberOf(const Tdata& value)
{
  return value.doubleValue();
}
double numberOf(const Variant& value)
{
  const double* number = std::get_if<double>(&value);
  return number ? *number : *std::get_if<int>(&value);
}
double numberOf(const std::any& value)
{
  return *std::any_cast<double>(&value);
}
double numberOf(const boost::any& value)
{
  return *boost::any_cast<double>(&value);
}
double numberOf(const QVariant& value)
{
  return value.toDouble();
}

// The peers have no arithmetic, and most no order.
template <class Value>
Value sum(const Value& left, const Value& right)
{
  return Value(numberOf(left) + numberOf(right));
}
Tdata sum(const Tdata& left, const Tdata& right)
{
  return left + right;
}
template <class Value>
bool isLess(const Value& left, const Value& right)
{
  return numberOf(left) < numberOf(right);
}
bool isLess(const Tdata& left, const Tdata& right)
{
  return left < right;
}

// What is drawn at random: small whole numbers, and two orders.
struct Inputs
{
  std::vector<double> numbers;
  std::vector<std::uint32_t> order, others;
  std::size_t total = 0, less = 0;

  Inputs()
  {
    std::mt19937 random(7);
    for (std::size_t i = 0; i < kValues; ++i)
    {
      numbers.push_back(double(random() % 1000));
      total += std::size_t(numbers[i]);
    }
    order.resize(kValues);
    std::iota(order.begin(), order.end(), 0U);
    others = order;
    std::shuffle(order.begin(), order.end(), random);
    std::shuffle(others.begin(), others.end(), random);
    for (std::size_t i = 0; i < kValues; ++i)
      less += numbers[order[i]] < numbers[others[i]];
  }
};
const Inputs gInputs;

// The shortest of ten rounds, each of which must return \p expected.
template <class Round>
double shortest(const char* name, std::size_t expected, Round round)
{
  double best = 1e9;
  for (int i = 0; i < 10; ++i)
  {
    std::size_t result = 0;
    best = std::min(best, seconds([&] { result = round(); }));
    require(result == expected, name);
  }
  return best;
}

void add(const std::string& table, const char* name, bool ours, std::function<double()> run)
{
  gCases.push_back({table, name, ours, 10, std::move(run)});
}

// Adds up what \p of makes of each pair of indices in the orders. In whole numbers, which a call leaves in registers.
template <class Of>
std::size_t totalOf(Of of)
{
  std::size_t total = 0;
  for (std::size_t i = 0; i < kValues; ++i)
    total += std::size_t(of(gInputs.order[i], gInputs.others[i]));
  return total;
}

template <class Value>
void addNumbers(const char* name, bool ours)
{
  const auto values = std::make_shared<std::vector<Value>>(gInputs.numbers.begin(), gInputs.numbers.end());
  const auto addTotal = [=](const char* table, std::size_t expected, auto of) {
    add(table, name, ours, [=] {
      return shortest(name, expected, [&] {
        return totalOf([&, &from = *values](std::size_t i, std::size_t j) { return of(from, i, j); });
      });
    });
  };
  addTotal("number.construct", gInputs.total, [](const auto&, std::size_t i, std::size_t) {
    Value value(gInputs.numbers[i]);
    makeKnown(value);
    return numberOf(value);
  });
  addTotal("number.copy", gInputs.total, [](const auto& from, std::size_t i, std::size_t) {
    Value value(from[i]);
    makeKnown(value);
    return numberOf(value);
  });
  addTotal("number.+", 2 * gInputs.total,
           [](const auto& from, std::size_t i, std::size_t j) { return numberOf(sum(from[i], from[j])); });
  addTotal("number.<", gInputs.less,
           [](const auto& from, std::size_t i, std::size_t j) { return isLess(from[i], from[j]); });
  add("number.assign", name, ours, [=] {
    std::vector<Value> targets(kValues, Value(1.0));
    const double time = shortest(name, 0, [&, &from = *values] {
      for (std::size_t i = 0; i < kValues; ++i)
        targets[gInputs.order[i]] = from[gInputs.others[i]];
      return 0;
    });
    require(totalOf([&](std::size_t i, std::size_t) { return numberOf(targets[i]); }) == gInputs.total, name);
    return time;
  });
}

// Copies values that have a matrix each, which \p matrixOf finds.
template <class Make, class MatrixOf>
void addMatrix(const char* name, bool ours, Make make, MatrixOf matrixOf)
{
  using Value = decltype(make(T4dDblMatrix()));
  const auto values = std::make_shared<std::vector<Value>>();
  for (int i = 0; i < 100; ++i)
    values->push_back(make(T4dDblMatrix(T4dDblVector(i, 0, 0))));
  auto order = gInputs.order;
  for (std::uint32_t& i : order)
    i %= 100;
  add("matrix.copy", name, ours, [=] {
    return shortest(name, kValues, [&, &from = *values] {
      std::size_t good = 0;
      for (const std::uint32_t i : order)
      {
        Value value(from[i]);
        makeKnown(value);
        good += matrixOf(value) != nullptr;
      }
      return good;
    });
  });
}

template <class Make, class FirstOf>
void addTuple(const char* name, bool ours, Make make, FirstOf firstOf)
{
  add("tuple.create", name, ours, [=] {
    return shortest(name, gInputs.total, [&] {
      return totalOf([&](std::size_t i, std::size_t) {
        auto value = make(Triple{gInputs.numbers[i], 1, 2});
        makeKnown(value);
        return firstOf(value);
      });
    });
  });
}

template <class Make, class Unmake>
void addHeap(const char* name, bool ours, Make make, Unmake unmake)
{
  add("heap", name, ours, [=] {
    std::vector<decltype(make())> handles;
    for (int i = 0; i < 1000; ++i)
      handles.push_back(make());
    const double time = shortest(name, 0, [&] {
      for (const std::uint32_t i : gInputs.order)
      {
        auto& handle = handles[i % 1000];
        unmake(handle);
        handle = make();
        makeKnown(handle);
      }
      return 0;
    });
    for (auto* handle : handles)
      unmake(handle);
    return time;
  });
}

} // namespace

int main(int argc, char** argv)
{
  addNumbers<Tdata>("Tdata", true);
  addNumbers<Variant>("variant", false);
  addNumbers<std::any>("any", false);
  addNumbers<boost::any>("boost::any", false);
  addNumbers<QVariant>("QVariant", false);
  for (const char* what : {"construct", "copy", "+", "<", "assign"})
    gAims.push_back({std::string("number.") + what, "Tdata", "variant", 1});

  using Matrix = T4dDblMatrix;
  addMatrix(
    "Tdata", true, [](const Matrix& matrix) { return Tdata(new TdataMatrix(matrix)); },
    [](const Tdata& value) { return value.privateDataStar(); });
  addMatrix(
    "any", false, [](const Matrix& matrix) { return std::any(matrix); },
    [](const std::any& value) { return std::any_cast<Matrix>(&value); });
  addMatrix(
    "boost::any", false, [](const Matrix& matrix) { return boost::any(matrix); },
    [](const boost::any& value) { return boost::any_cast<Matrix>(&value); });
  addMatrix(
    "QVariant", false, [](const Matrix& matrix) { return QVariant::fromValue(matrix); },
    [](const QVariant& value) { return value.constData(); });
  addMatrix(
    "shared_ptr", false, [](const Matrix& matrix) { return std::make_shared<Matrix>(matrix); },
    [](const std::shared_ptr<Matrix>& value) { return value.get(); });
  gAims.push_back({"matrix.copy", "Tdata", "any", 0.1});

  addTuple(
    "Tdata", true, [](const Triple& triple) { return Tdata(new Tdata3Double(triple[0], triple[1], triple[2])); },
    [](const Tdata& value) { return static_cast<const Tdata3Double*>(value.privateDataStar())->number(0); });
  addTuple(
    "any", false, [](const Triple& triple) { return std::any(triple); },
    [](const std::any& value) { return (*std::any_cast<Triple>(&value))[0]; });
  addTuple(
    "boost::any", false, [](const Triple& triple) { return boost::any(triple); },
    [](const boost::any& value) { return (*boost::any_cast<Triple>(&value))[0]; });
  addTuple(
    "QVariant", false, [](const Triple& triple) { return QVariant::fromValue(triple); },
    [](const QVariant& value) { return (*static_cast<const Triple*>(value.constData()))[0]; });
  addTuple(
    "vector of any", false,
    [](const Triple& triple) { return std::any(std::vector<std::any>(triple.begin(), triple.end())); },
    [](const std::any& value) { return numberOf((*std::any_cast<std::vector<std::any>>(&value))[0]); });

  addHeap(
    "new Tdata", true, [] { return new Tdata; }, [](Tdata* handle) { delete handle; });
  addHeap(
    "malloc", false, [] { return std::malloc(sizeof(Tdata)); }, [](void* block) { std::free(block); });
  addHeap(
    "operator new", false, [] { return ::operator new(sizeof(Tdata)); }, [](void* block) { ::operator delete(block); });
  gAims.push_back({"heap", "new Tdata", "malloc", 1});

  return runRatios(argc, argv, gCases, gAims);
}
