// What the arrays cost beside std::vector, boost::container::vector and QVector.
//
// "append" fills new arrays one element at a time, with 4, 8 and 32-byte elements, as many arrays as make 10,000,000
// elements together, so that growing and freeing count too. "insert" and "remove" work at random places until an array
// is full or empty. "find" looks for random values that are there, "sorted" searches in order. Positions and values are
// drawn before the clock starts. Each case sums up what it found, and a sum that differs from its peers' ends the run.
// The table at the end shows the memory that is taken for each element after appending.
//
// One table alone: --benchmark_filter=append.4

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/SortedArrays.h"
#include "benchmarks/Ratios.h"

#include <QVector>
#include <boost/container/flat_set.hpp>
#include <boost/container/vector.hpp>

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <map>
#include <memory>
#include <random>

namespace {

struct Bytes32
{
  double values[4];

  Bytes32(double value = 0)
    : values{value, 1, 2, 3}
  {
  }
  operator double() const { return values[0]; }
  bool operator==(const Bytes32& other) const { return std::memcmp(this, &other, sizeof other) == 0; }
};

// One set of operations over each of the four.

template <class X>
struct Ours
{
  TtypedArray<X> array;
  void append(const X& value) { array.addLast(value); }
  void insert(unsigned int at, const X& value) { array.insert(value, at); }
  void remove(unsigned int at) { array.removeAt(at); }
  unsigned int find(const X& value) const
  {
    unsigned int index;
    array.find(value, index);
    return index;
  }
  std::size_t capacity() const // with the room that malloc() knows of
  {
    const std::size_t bytes = array.physicalSize() * sizeof(X);
    return bytes < Tarray::kMappedBytes ? malloc_usable_size(const_cast<X*>(array.data())) / sizeof(X)
                                        : array.physicalSize();
  }
};

template <class X, class Vector>
struct Standard
{
  Vector array;
  void append(const X& value) { array.push_back(value); }
  void insert(unsigned int at, const X& value) { array.insert(array.begin() + at, value); }
  void remove(unsigned int at) { array.erase(array.begin() + at); }
  unsigned int find(const X& value) const
  {
    return unsigned(std::find(array.begin(), array.end(), value) - array.begin());
  }
  std::size_t capacity() const { return std::size_t(array.capacity()); }
};
template <class X>
using Std = Standard<X, std::vector<X>>;
template <class X>
using Boost = Standard<X, boost::container::vector<X>>;

template <class X>
struct Qvec
{
  QVector<X> array;
  void append(const X& value) { array.append(value); }
  void insert(unsigned int at, const X& value) { array.insert(int(at), value); }
  void remove(unsigned int at) { array.remove(int(at)); }
  unsigned int find(const X& value) const { return unsigned(array.indexOf(value)); }
  std::size_t capacity() const { return std::size_t(array.capacity()); }
};

struct OurSorted
{
  TdoubleSortedArray array{true, 4};
  void insert(double value) { array.insert(value); }
  unsigned int find(double value) const
  {
    unsigned int index;
    array.find(value, index);
    return index;
  }
};
struct StdSorted
{
  std::vector<double> array;
  void insert(double value) { array.insert(std::lower_bound(array.begin(), array.end(), value), value); }
  unsigned int find(double value) const
  {
    return unsigned(std::lower_bound(array.begin(), array.end(), value) - array.begin());
  }
};
struct BoostSorted
{
  boost::container::flat_multiset<double> array;
  void insert(double value) { array.insert(value); }
  unsigned int find(double value) const { return unsigned(array.lower_bound(value) - array.begin()); }
};
struct QtSorted
{
  QVector<double> array;
  void insert(double value) { array.insert(std::lower_bound(array.begin(), array.end(), value), value); }
  unsigned int find(double value) const
  {
    return unsigned(std::lower_bound(array.cbegin(), array.cend(), value) - array.cbegin());
  }
};

// From here on the compiler takes it that others know the container, as they know a member of an object. A container
// that is all its own it keeps in registers, but only that of some peers, and of real programs hardly any.
template <class Container>
void makeKnown(Container& container)
{
  asm volatile("" : : "r"(&container) : "memory");
}

std::vector<Case> gCases;
std::vector<Aim> gAims;

std::map<std::string, double> gSums; // by table

// What a case has seen is needed, and the same in all cases of a table.
double checked(const std::string& table, double sum, double time)
{
  if (const auto [known, isNew] = gSums.emplace(table, sum); known->second != sum)
  {
    std::fprintf(stderr, "array: a sum of %s is %g, not %g\n", table.c_str(), sum, known->second);
    std::exit(1);
  }
  return time;
}

// run(container) returns its sum. A container is made before and freed behind the clock.
template <class Container, class Run>
void add(const std::string& table, const char* name, bool ours, Run run)
{
  gCases.push_back({table, name, ours, 1, [=] {
                      double sum = 0;
                      const double time = seconds([&] { sum = run(static_cast<Container*>(nullptr)); });
                      return checked(table, sum, time);
                    }});
}

template <template <class> class Container, class X>
void addAppend(const std::string& table, const char* name, bool ours, unsigned int length)
{
  add<Container<X>>(table, name, ours, [length](auto* type) {
    double sum = 0;
    for (unsigned int round = 0; round < 10000000 / length; ++round)
    {
      std::remove_pointer_t<decltype(type)> container;
      makeKnown(container);
      for (unsigned int i = 0; i < length; ++i)
        container.append(X(i));
      sum += double(container.array[length / 2]) + double(container.array.size());
    }
    return sum;
  });
}

// Random indices for a container that grows from 1 element to each length, or shrinks to it.
std::vector<unsigned int> places(unsigned int length)
{
  std::mt19937 random(5);
  std::vector<unsigned int> made(length);
  for (unsigned int i = 0; i < length; ++i)
    made[i] = unsigned(random()) % (i + 1);
  return made;
}

template <template <class> class Container, class X>
void addChanges(const std::string& table, const char* name, bool ours, unsigned int length)
{
  const auto at = std::make_shared<std::vector<unsigned int>>(places(length));
  const unsigned int rounds = 2000000 / length / (length / 1000 + 1);
  add<Container<X>>("insert" + table, name, ours, [at, rounds](auto* type) {
    double sum = 0;
    for (unsigned int round = 0; round < rounds; ++round)
    {
      std::remove_pointer_t<decltype(type)> container;
      makeKnown(container);
      for (unsigned int i = 0; i < at->size(); ++i)
        container.insert((*at)[i], X(i));
      sum += double(container.array[(*at)[round % at->size()]]);
    }
    return sum;
  });
  gCases.push_back({"remove" + table, name, ours, 1, [=] {
                      Container<X> full;
                      for (unsigned int i = 0; i < length; ++i)
                        full.append(X(i));
                      double sum = 0, time = 0;
                      for (unsigned int round = 0; round < rounds; ++round)
                      {
                        Container<X> container = full;
                        makeKnown(container);
                        container.append(X(1)); // of QVector's, which shares copies until they change
                        container.remove(length);
                        time += seconds([&] {
                          for (unsigned int i = length; i-- > length / 10;)
                            container.remove((*at)[i]);
                        });
                        sum += double(container.array[length / 20]);
                      }
                      return checked("remove" + table, sum, time);
                    }});
}

template <template <class> class Container, class X>
void addFind(const std::string& table, const char* name, bool ours, unsigned int length)
{
  const auto container = std::make_shared<Container<X>>();
  const auto wanted = std::make_shared<std::vector<X>>();
  std::mt19937 random(11);
  for (unsigned int i = 0; i < length; ++i)
    container->append(X(int(i)));
  for (unsigned int i = 0; i < 20000000 / length; ++i)
    wanted->push_back(X(int(random() % length)));
  add<Container<X>>(table, name, ours, [=](auto*) {
    double sum = 0;
    for (const X& value : *wanted)
      sum += container->find(value);
    return sum;
  });
}

template <class Container>
void addSorted(const char* name, bool ours, unsigned int length)
{
  std::mt19937 random(13);
  const auto values = std::make_shared<std::vector<double>>(length);
  const auto wanted = std::make_shared<std::vector<double>>(500000);
  for (double& value : *values)
    value = double(random());
  for (double& value : *wanted)
    value = (*values)[random() % length];
  const std::string count = " " + std::to_string(length);
  if (length <= 10000)
  {
    add<Container>("sorted insert" + count, name, ours, [=](auto* type) {
      double sum = 0;
      for (unsigned int round = 0; round < 100000 / length; ++round)
      {
        std::remove_pointer_t<decltype(type)> container;
        makeKnown(container);
        for (const double value : *values)
          container.insert(value);
        sum += double(container.array.size());
      }
      return sum;
    });
  }
  std::sort(values->begin(), values->end());
  const auto container = std::make_shared<Container>();
  for (const double value : *values)
    container->insert(value);
  add<Container>("sorted find" + count, name, ours, [=](auto*) {
    double sum = 0;
    for (const double value : *wanted)
      sum += container->find(value);
    return sum;
  });
}

template <class X>
void addAll(const char* bytes)
{
  const std::string size = std::string(" ") + bytes;
  for (const unsigned int length : {10U, 100U, 1000U, 10000U, 100000U, 1000000U, 10000000U})
  {
    const std::string table = "append" + size + " x" + std::to_string(length);
    addAppend<Ours, X>(table, "Tarray", true, length);
    addAppend<Std, X>(table, "std::vector", false, length);
    addAppend<Boost, X>(table, "boost vector", false, length);
    addAppend<Qvec, X>(table, "QVector", false, length);
    gAims.push_back({table, "Tarray", "std::vector", 1.0});
  }
  for (const unsigned int length : {100U, 1000U, 10000U})
  {
    const std::string table = size + " x" + std::to_string(length);
    addChanges<Ours, X>(table, "Tarray", true, length);
    addChanges<Std, X>(table, "std::vector", false, length);
    addChanges<Boost, X>(table, "boost vector", false, length);
    addChanges<Qvec, X>(table, "QVector", false, length);
    addFind<Ours, X>("find" + table, "Tarray", true, length);
    addFind<Std, X>("find" + table, "std::vector", false, length);
    addFind<Boost, X>("find" + table, "boost vector", false, length);
    addFind<Qvec, X>("find" + table, "QVector", false, length);
    for (const char* operation : {"insert", "remove", "find"})
      gAims.push_back({operation + table, "Tarray", "std::vector", 1.0});
  }
}

template <class Container>
double bytesPerElement(unsigned int length)
{
  Container container;
  for (unsigned int i = 0; i < length; ++i)
    container.append(Tint32(i));
  return double(container.capacity()) * sizeof(Tint32) / length;
}

} // namespace

int main(int argc, char** argv)
{
  addAll<Tint32>("4");
  addAll<double>("8");
  addAll<Bytes32>("32");
  for (const unsigned int length : {1000U, 10000U, 100000U, 1000000U})
  {
    addSorted<OurSorted>("Tarray", true, length);
    addSorted<StdSorted>("std::vector", false, length);
    addSorted<BoostSorted>("flat_multiset", false, length);
    addSorted<QtSorted>("QVector", false, length);
    gAims.push_back({"sorted find " + std::to_string(length), "Tarray", "std::vector", 1.0});
    gAims.push_back({"sorted insert " + std::to_string(length), "Tarray", "std::vector", 1.0});
  }
  const int status = runRatios(argc, argv, gCases, gAims);
  std::printf("\n%-34s%12s%18s%18s%18s\n", "bytes for each element of 4", "Tarray", "std::vector", "boost vector",
              "QVector");
  for (const unsigned int length : {10U, 1000U, 100000U, 10000000U})
  {
    std::printf("  %-32u%12.2f%18.2f%18.2f%18.2f\n", length, bytesPerElement<Ours<Tint32>>(length),
                bytesPerElement<Std<Tint32>>(length), bytesPerElement<Boost<Tint32>>(length),
                bytesPerElement<Qvec<Tint32>>(length));
  }
  return status;
}
