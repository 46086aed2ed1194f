#include "Foundation/Data/Tdata.h"
#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Data/TargList.h"
#include "Foundation/Data/TdataReader.h"
#include "Foundation/Data/TmetaLetter.h"
#include "Foundation/Data/visitData.h"
#include "Foundation/Debug/Texception.h"
#include "Foundation/Iff/TiffFile.h"
#include "tests/FailingMemory.h"
#include "tests/Iff/Chunks.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::string text(const Tdata& data)
{
  return (std::ostringstream() << data).str();
}

// A value of each kind, of random bits.
std::vector<Tdata> allKinds(std::mt19937_64& random)
{
  const auto real = [&] { return std::bit_cast<double>(random()); };
  const auto single = [&] { return std::bit_cast<float>(std::uint32_t(random())); };
  const auto whole = [&] { return Tint32(random()); };
  const auto half = [&] { return Tint16(random()); };
  std::vector<Tdata> values{real(), TanimTime(whole()), Tdata(static_cast<TdataLetter*>(nullptr))};
  const auto add = [&values](TdataLetter* letter) { values.emplace_back(letter); };
  add(new Tdata2Double(real(), real()));
  add(new Tdata3Double(real(), real(), real()));
  add(new Tdata2Float(single(), single()));
  add(new Tdata3Float(single(), single(), single()));
  add(new Tdata2Int16(half(), half()));
  add(new Tdata3Int16(half(), half(), half()));
  add(new Tdata2Int32(whole(), whole()));
  add(new Tdata3Int32(whole(), whole(), whole()));
  add(new TdataReflectance({single(), single(), single()}));
  add(new TdataSpectrum({single(), single(), single()}));
  TdoubleArray doubles;
  Tint32Array integers;
  T4dDblVectorArray vectors;
  T4dDblMatrix matrix;
  for (int i = 0, count = int(random() % 5); i < count; ++i)
  {
    doubles.addLast(real());
    integers.addLast(whole());
    vectors.addLast({real(), real(), real()});
    matrix(short(i), 3) = real();
  }
  add(new TdataDoubleArray(doubles));
  add(new TdataInt32Array(integers));
  add(new TdataVectorArray(vectors));
  add(new TdataMatrix(matrix));
  auto* unknown = new TdataUnknown(TiffTag("zz z"));
  for (int i = 0, count = int(random() % 9); i < count; ++i)
    unknown->bytes().addLast(static_cast<unsigned char>(random()));
  add(unknown);
  return values;
}

// Two levels of compounds with all kinds in them.
Tdata randomTree(std::mt19937_64& random)
{
  auto* inner = new TdataCompound;
  auto* outer = new TdataCompound;
  Tdata tree(outer);
  for (const Tdata& value : allKinds(random))
    inner->addData(value);
  inner->setGroup("LIS4", "many");
  outer->addData(Tdata(inner));
  for (const Tdata& value : allKinds(random))
    outer->addData(value);
  return tree;
}

std::vector<char> fileOf(const Tdata& data)
{
  std::vector<char> block(100000);
  TiffFile file(memoryName(block.data(), block.size()).c_str(), "w");
  EXPECT_EQ(data.writeBinary(file), 0) << text(data);
  block.resize(std::size_t(file.tell()));
  EXPECT_EQ(file.close(), 0);
  return block;
}

Tdata readFile(const std::vector<char>& block)
{
  TiffFile file(memoryName(block.data(), block.size()).c_str(), "r");
  TdataReader reader;
  file.setCallbackObject(&reader);
  EXPECT_EQ(file.parse(), 0);
  EXPECT_EQ(reader.values().length(), 1U);
  return reader.values()[0];
}

TEST(Tdata, SharesLettersUntilTwoWouldWrite)
{
  auto* letter = new Tdata2Double(1, 2);
  Tdata first(letter);
  EXPECT_TRUE(first.holder() && !first.hasWriter() && letter->holderCount() == 1);
  first.makeWritable();
  EXPECT_TRUE(first.writer() && first.isLetterWritable() && letter->holderCount() == 0 && letter->writerCount() == 1);

  Tdata second = first; // a holder, no second writer, no copy
  EXPECT_TRUE(second.holder() && second.privateDataStar() == letter && letter->referenceCount() == 2);
  first *= 2;
  EXPECT_EQ(text(second), "double2 2 4");
  second = first; // the same letter: the role stays
  first = second;
  first = Tdata(second);
  EXPECT_TRUE(first.writer() && second.holder() && letter->referenceCount() == 2);

  second.makeWritable(); // a copy of its own
  EXPECT_TRUE(second.isLetterWritable() && second.privateDataStar() != letter && letter->referenceCount() == 1);
  second *= 2;
  EXPECT_EQ(text(first) + text(second), "double2 2 4double2 4 8");

  Tdata third = first;
  first.makeHolder();
  EXPECT_EQ(letter->holderCount(), 2);
  EXPECT_EQ((third += second, text(first)), "double2 6 12"); // no writer: the same letter, and others see it
  EXPECT_TRUE(third.isLetterWritable());
  first = first.letterAs<TdataCompound>()->begin()[0]; // which the handle itself keeps alive
  EXPECT_EQ(text(first), "6");

  letter->apiReference();
  third.reset();
  EXPECT_TRUE(third.isNULL() && third.holder() && letter->hasWriter() && letter->referenceCount() == 1);
  letter->apiUnreference();

  first.fromCache(true);
  second = first;
  EXPECT_TRUE(second.isFromCache() && second.isNumeric() && second.writer());
  first = nullptr;
  EXPECT_TRUE(first.isNULL() && first.isFromCache());
  second = TanimTime(5);
  EXPECT_TRUE((second = first).isNULL());
  EXPECT_EQ(&first.letter(), &second.letter());
}

TEST(Tdata, ConvertsNumbersByTruncationWithinTheRange)
{
  const struct
  {
    double value;
    int boolean, byte;
    Tint16 half;
    Tint32 whole;
    TuInt64 size;
  } cases[] = {
    {0, 0, 0, 0, 0, 0},
    {-0.5, 1, 0, 0, 0, 0},
    {1.9, 1, 1, 1, 1, 1},
    {-1.9, 1, 0, -1, -1, 0},
    {300, 1, 255, 300, 300, 300},
    {-40000, 1, 0, -32768, -40000, 0},
    {1e300, 1, 255, 32767, INT_MAX, SIZE_MAX},
    {-1e300, 1, 0, -32768, INT_MIN, 0},
    {2147483647.5, 1, 255, 32767, INT_MAX, 2147483647},
    {kNan, 0, 0, 0, 0, 0},
  };
  for (const auto& each : cases)
  {
    const Tdata data = each.value;
    EXPECT_EQ(data.booleanValue(), each.boolean) << each.value;
    EXPECT_EQ(data.byteValue(), each.byte) << each.value;
    EXPECT_EQ(data.int16Value(), each.half) << each.value;
    EXPECT_EQ(data.int32Value(), each.whole) << each.value;
    EXPECT_EQ(data.size_tValue(), each.size) << each.value;
  }
  EXPECT_EQ(Tdata(TanimTime(9000)).int16Value(), 1);
  EXPECT_EQ(Tdata(1.5).timeValue().ticks(), 9000);
  EXPECT_EQ(Tdata(static_cast<unsigned char>(200)).doubleValue(), 200);
  EXPECT_EQ(Tdata(4000000000U).doubleValue(), 4e9);
  EXPECT_TRUE(Tdata(kTimeSeconds).isNumeric() && Tdata(std::vector<bool>{true}[0]) == 1); // no ticks
}

TEST(Tdata, ComparesAndComputesWhereItMeansSomething)
{
  const Tdata values[] = {
    2,                                             // 0
    TanimTime(12000),                              // 1
    Tdata(static_cast<TdataLetter*>(nullptr)),     // 2
    Tdata(new Tdata2Double(1, 2)),                 // 3
    Tdata(new Tdata2Int16(1, 3)),                  // 4
    Tdata(new TdataDoubleArray({1, 2})),           // 5
    Tdata(new TdataDoubleArray({1, 2, 3})),        // 6
    Tdata(new TdataInt32Array({INT_MAX, 7})),      // 7
    Tdata(new TdataMatrix(T4dDblVector(1, 2, 3))), // 8
    Tdata(new TdataReflectance({1, 2, 0.5F})),     // 9
    Tdata(new TdataLetter),                        // 10
    kNan,                                          // 11
  };
  // The values of == != < <= > >= as digits, then the results of + - * /, "!" for one that cannot be.
  const struct
  {
    int left, right;
    const char *comparison, *results[4];
  } cases[] = {
    {0, 0, "100101", {"4", "0", "4", "1"}},
    {0, 1, "100101", {"4", "0", "4", "1"}},
    {1, 0, "100101", {"24000t", "0t", "24000t", "6000t"}},
    {1, 1, "100101", {"24000t", "0t", "144000000t", "1t"}},
    {0, 11, "010000", {"nan", "nan", "nan", "nan"}},
    {2, 2, "100101", {"!", "!", "!", "!"}},
    {0, 2, "010011", {"!", "!", "!", "!"}},
    {0, 3, "010011", {"!", "!", "double2 2 4", "!"}},
    {3, 0, "010011", {"!", "!", "double2 2 4", "double2 0.5 1"}},
    {3, 4, "011100", {"double2 2 5", "double2 0 -1", "double2 1 6", "double2 1 0.6666666666666666"}},
    {4, 3, "010011", {"short2 2 5", "short2 0 1", "short2 1 6", "short2 1 1"}},
    {5, 6, "011100", {"!", "!", "!", "!"}},
    {5, 5, "100101", {"doubleArray 2 2 4", "doubleArray 2 0 0", "doubleArray 2 1 4", "doubleArray 2 1 1"}},
    {7,
     7,
     "100101",
     {"Int32Array 2 2147483647 14", "Int32Array 2 0 0", "Int32Array 2 2147483647 49", "Int32Array 2 1 1"}},
    {5, 7, "010011", {"!", "!", "!", "!"}},
    {8,
     8,
     "100011",
     {"matrix 2 0 0 0 0 2 0 0 0 0 2 0 2 4 6 2", "matrix 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0",
      "matrix 1 0 0 0 0 1 0 0 0 0 1 0 2 4 6 1", "!"}},
    {9, 0, "010011", {"!", "!", "reflectanceRGB 2 4 1", "reflectanceRGB 0.5 1 0.25"}},
    {10, 10, "010011", {"!", "!", "!", "!"}},
  };
  for (const auto& each : cases)
  {
    const Tdata &left = values[each.left], &right = values[each.right];
    std::string comparison;
    for (const bool answer : {left == right, left != right, left<right, left <= right, left> right, left >= right})
      comparison += answer ? '1' : '0';
    EXPECT_EQ(comparison, each.comparison) << text(left) << " and " << text(right);
    for (int i = 0; i < 4; ++i)
    {
      const std::string before = text(left) + text(right);
      const auto operation = ToperationOnData(i);
      std::string result = "!";
      Tdata changed = left.unshared();
      try
      {
        i == 0 ? changed += right : i == 1 ? changed -= right : i == 2 ? changed *= right : changed /= right;
        result = text(changed);
        EXPECT_EQ(text(left.combined(operation, right)), result);
      }
      catch (const TincompatibleData&)
      {
        EXPECT_EQ(text(changed), text(left));
        EXPECT_THROW(left.combined(operation, right), TincompatibleData);
      }
      EXPECT_EQ(result.substr(0, 3) == "nan" ? "nan" : result, each.results[i]) << before << " " << i;
      EXPECT_EQ(text(left) + text(right), before);
    }
  }
  EXPECT_THROW((void)(values[8].letter() < values[8].letter()), TincompatibleData);
  EXPECT_THROW((void)(values[10].letter() == values[10].letter()), TincompatibleData);
  EXPECT_TRUE(values[8].letter() == values[8].letter() && values[10].letter() != values[10]);
  EXPECT_THROW(Tdata(values[3]).writableAs<Tdata2Double>()->setData(0, values[5]), TbadDataCast);
}

// Kinds as a program might add them: one with a length of its own, and a group.
template <class Base>
class Added : public Base
{
public:
  using Base::Base;
  TdataLetter* copy() const override { return new Added(*this); }
  Tmetaclass* typeof() const override { return fTypeid; }
  void* cast(Tmetaclass* type) override { return type == fTypeid ? this : TdataCompound::cast(type); }
  static void* create(Tmetaclass* requested) { return (new Added)->cast(requested); }
  inline static Tmetaclass* fTypeid;
};
using Quaternion = Added<TdataTupleOf<float, 4, TnumberType::kFloat>>;
using Layer = Added<TdataCompound>;

TEST(Tdata, StoresKindsThatAProgramAdds)
{
  Tmetaclass quaternion(nullptr, "quaternion", 56, Quaternion::create, TiffTag("QUAT").value(), 0,
                        &TdataCompound::fTypeid);
  Tmetaclass layer(nullptr, "layer", 56, Layer::create, TiffTag("LAYR").value(), 0, &TdataCompound::fTypeid);
  Quaternion::fTypeid = &quaternion;
  Layer::fTypeid = &layer;
  const TmetaLetter first(&quaternion), second(&layer);
  auto* inner = new Layer;
  auto* outer = new Layer;
  const Tdata tree(outer);
  outer->addData(Tdata(inner));
  inner->addData(Tdata(new Quaternion(1, 2, 3, 0.5)));
  EXPECT_EQ(text(tree * 2), "layer 1 layer 1 quaternion 2 4 6 1");
  TstringArgList arguments;
  arguments.setText(text(tree).c_str());
  unsigned int next = 0;
  Tdata read;
  EXPECT_EQ(read.readASCII(arguments, next, -1), 0);
  for (const Tdata& each : {read, readFile(fileOf(tree)), tree.unshared()})
  {
    EXPECT_TRUE(each == tree && each.letterAs<Layer>());
    EXPECT_EQ(text(each), text(tree));
  }

  // A chunk with the tag of a group is none, and those in it are not read either, however deep.
  const std::string group = chunk("FOR4", "LAYR" + chunk("LAYR", chunk("LAYR", "")));
  const Tdata values = readFile({group.begin(), group.end()});
  EXPECT_EQ(text(values), "layer 1 TdataUnknown 4c4159524c41595200000000");
  const unsigned forms = FLsetnameforms(kFLformPath); // which are for others' names
  std::string bytes = chunk("LAYR", chunk("TIME", std::string(4, 0)));
  void* at = bytes.data();
  unsigned long size = bytes.size();
  EXPECT_EQ(read.readBinary("LAYR", size, at), 0);
  EXPECT_EQ(text(read), "layer 1 TdataUnknown 4c41595254494d450000000400000000");
  FLsetnameforms(forms);
}

TEST(Tdata, ReadsBackWhatItWroteBitForBit)
{
  std::mt19937_64 random(5);
  for (int i = 0; i < 200; ++i)
  {
    const Tdata tree = randomTree(random);
    const std::vector<char> file = fileOf(tree);
    EXPECT_EQ(fileOf(readFile(file)), file);

    // The same as text; names and numbers in one line, or in several. The ids of groups have none.
    Tstring written;
    tree.appendText(written, i % 3, true);
    TstringArgList arguments;
    ASSERT_TRUE(arguments.setText(written)) << written;
    Tdata read;
    unsigned int next = 0;
    ASSERT_EQ(read.readASCII(arguments, next, -1), 0) << written;
    EXPECT_EQ(next, arguments.length());
    static_cast<TdataCompound*>((*read.writableAs<TdataCompound>())(0, TdataCompound::fTypeid))
      ->setGroup("LIS4", "many");
    EXPECT_EQ(fileOf(read), file) << written;
  }
}

TEST(Tdata, RefusesWhatIsNoValueAndKeepsWhatItHas)
{
  const char* const noTexts[] = {"",
                                 "double2 1",
                                 "double2 1 x",
                                 "short2 1 2.5",
                                 "short2 1 40000",
                                 "Int32Array 3 1 2",
                                 "doubleArray -1",
                                 "doubleArray 2000000000 1",
                                 "vectorArray 1 1 2",
                                 "matrix 1",
                                 "TdataCompound 3 1 2",
                                 "TdataCompound 1 TdataCompound",
                                 "TdataUnknown 4142434g",
                                 "TdataUnknown 414243",
                                 "1.5.5",
                                 "word"};
  std::string deep;
  for (unsigned i = 0; i <= TdataCompound::kMostLevels; ++i)
    deep += "TdataCompound 1 ";
  Tdata data = 7;
  TstringArgList arguments;
  unsigned int next = 0;
  for (const char* each : noTexts)
  {
    arguments.setText(each);
    EXPECT_NE(data.readASCII(arguments, next, -1), 0) << each;
  }
  arguments.setText((deep + "1").c_str());
  EXPECT_NE(data.readASCII(arguments, next, -1), 0);
  arguments.setText((deep.substr(16) + "1").c_str());
  EXPECT_NE(data.readASCII(arguments, next, long(arguments.length()) - 1), 0); // more than may be taken
  EXPECT_EQ(text(data) + std::to_string(next), "70");
  EXPECT_EQ(data.readASCII(arguments, next, -1), 0);

  // What its kind cannot read stays a chunk. A letter refuses it and stays as it was.
  char bytes[130] = {1, 2, 3};
  const struct
  {
    TiffTag tag;
    unsigned long size;
    bool isRead;
  } chunks[] = {{"DBLE", 4, false},  {"TIME", 8, false},  {"NULL", 1, false},   {"DBL2", 15, false},
                {"SRT3", 6, true},   {"LNG2", 12, false}, {"MATR", 127, false}, {"MATR", 128, true},
                {"VEC#", 32, false}, {"VEC#", 48, true},  {"I32#", 3, false},   {"DBL#", 0, true},
                {"CMPD", 7, false},  {"CMPD", 0, true},   {"RRGB", 8, false}};
  for (const auto& each : chunks)
  {
    void* at = bytes;
    unsigned long size = each.size;
    Tdata read;
    EXPECT_EQ(read.readBinary(each.tag, size, at), 0);
    EXPECT_EQ(!read.letterAs<TdataUnknown>(), each.isRead) << each.tag << each.size;
    EXPECT_TRUE(size == 0 && at == bytes + each.size);
    if (const Tdata letter(TmetaLetter::construct(each.tag)); !letter.letterAs<TdataUnknown>())
    {
      const std::string before = text(letter);
      size = each.size;
      at = bytes;
      EXPECT_EQ(letter.letter().readBinary(each.tag, size, at) == 0, each.isRead) << each.tag << each.size;
      EXPECT_TRUE(each.isRead || (text(letter) == before && size == each.size && at == bytes));
      at = bytes;
      EXPECT_NE(letter.letter().readBinary("none", size, at), 0);
    }
  }
  EXPECT_EQ(flerrno, 0);

  // Deeper than can be read is not written either.
  Tdata tower(new Tdata2Double(1, 2)); // which is no level
  for (unsigned i = 0; i <= TdataCompound::kMostLevels; ++i)
  {
    auto* compound = new TdataCompound;
    compound->addData(tower);
    tower = Tdata(compound);
  }
  std::vector<char> block(10000);
  TiffFile file(memoryName(block.data(), block.size()).c_str(), "w");
  EXPECT_NE(tower.writeBinary(file), 0);
  EXPECT_EQ(file.tell(), 0);
  EXPECT_EQ(tower.letterAs<TdataCompound>()->begin()->writeBinary(file), 0);
  flerrno = 0;
}

TEST(Tdata, VisitsAndMakesEachKind)
{
  struct Name
  {
    std::string operator()(double) const { return "number"; }
    std::string operator()(TanimTime) const { return "time"; }
    std::string operator()(std::nullptr_t) const { return "NULL"; }
    std::string operator()(const TdataLetter&) const { return "letter"; }
    std::string operator()(const TdataTuple& tuple) const { return tuple.typeName(); }
    std::string operator()(const TdataMatrix& matrix) const { return matrix.typeName(); }
  };
  std::mt19937_64 random(1);
  std::string names;
  for (const Tdata& value : allKinds(random))
    names += visitData(Name(), value) + " ";
  EXPECT_EQ(names,
            "number time NULL double2 double3 float2 float3 short2 short3 long2 long3 letter letter letter letter "
            "letter matrix letter ");

  TtypeidArray kinds;
  Tmetaclass::getDerivedClasses(TdataLetter::fTypeid, kinds);
  EXPECT_EQ(kinds.length(), 17U);
  for (Tmetaclass* kind : kinds)
  {
    const std::unique_ptr<Tdata> data(Tdata::construct(kind));
    ASSERT_TRUE(data && !data->isNULL());
    EXPECT_EQ(data->letter().typeof(), kind);
    EXPECT_EQ(TmetaLetter::findTypeid(kind->tag()), kind == TdataLetter::fTypeid ? nullptr : kind);
    EXPECT_EQ(TmetaLetter::findTypeid(kind->name()), TmetaLetter::findTypeid(kind->tag()));
    EXPECT_EQ(data->unshared().letter().typeof(), kind);
  }
  EXPECT_TRUE(Tdata::construct(Texception::fTypeid) == nullptr && !TdataLetter::construct(nullptr));
  const Tdata unknown(TmetaLetter::construct("????"));
  EXPECT_TRUE(unknown.letterAs<TdataUnknown>() && unknown.tag() == "UNKN" && Tdata().tag() == "DBLE");
  EXPECT_TRUE(!TmetaLetter::findTypeid("") && !TmetaLetter::findTypeid(static_cast<const char*>(nullptr)));
  {
    Tmetaclass late(nullptr, "matrix", 1, nullptr, TiffTag("LATE").value(), 0);
    const TmetaLetter entry(&late), again(&late);
    EXPECT_EQ(TmetaLetter::findTypeid("matrix"), TdataMatrix::fTypeid);
    EXPECT_EQ(TmetaLetter::findTypeid(TiffTag("LATE")), &late);
    EXPECT_FALSE(entry.createDataLetter());
  }
  EXPECT_FALSE(TmetaLetter::findTypeid(TiffTag("LATE")));
  EXPECT_EQ(TmetaLetter::findTypeid("matrix"), TdataMatrix::fTypeid);

  Tdata* const freed = new Tdata;
  delete freed;
  Tdata* const reused = new Tdata(2);
  EXPECT_EQ(reused, freed);
  delete reused;
}

#if FAILING_MEMORY
TEST(Tdata, LosesNothingWhenMemoryRunsOut)
{
  auto* compound = new TdataCompound;
  for (int i = 0; i < 3; ++i)
    compound->addData(Tdata(new TdataDoubleArray({1, 2, 3})));
  const Tdata tree(compound);
  Tdata writer = tree;
  writer.makeWritable();
  const std::vector<char> file = fileOf(tree);
  const std::string before = text(tree);
  TstringArgList arguments;
  arguments.setText(before.c_str());
  const int failures = forEachFailingAllocation([&] {
    Tdata data = tree;
    try
    {
      data *= 2; // a copy of all
      EXPECT_NE(data, tree);
    }
    catch (const TmemoryException&)
    {
      EXPECT_EQ(data.privateDataStar(), compound);
    }
    try
    {
      TiffFile reading(memoryName(file.data(), file.size()).c_str(), "r");
      TdataReader reader;
      reading.setCallbackObject(&reader);
      EXPECT_TRUE(!reading.isActive() || reading.parse() != 0 || reader.values()[0] == tree);
    }
    catch (const TmemoryException&)
    {
    }
    try
    {
      Tstring written;
      tree.appendText(written, 0, true);
      EXPECT_EQ(written, before);
    }
    catch (const TmemoryException&)
    {
    }
    try
    {
      Tstring all;
      arguments.appendAll(all);
      EXPECT_EQ(all, before);
      Tdata read;
      unsigned next = 0;
      EXPECT_EQ(read.readASCII(arguments, next, -1), 0);
    }
    catch (const TmemoryException&)
    {
    }
    const std::unique_ptr<TdataLetter> letter(TmetaLetter::construct("double3"));
    EXPECT_TRUE(!letter || letter->typeof() == Tdata3Double::fTypeid);
    const std::unique_ptr<Tdata> made(Tdata::construct(TdataMatrix::fTypeid));
    EXPECT_TRUE(!made || !made->isNULL());
  });
  EXPECT_GT(failures, 20);
  EXPECT_EQ(text(tree), before);
  EXPECT_EQ(compound->referenceCount(), 2);
  flerrno = 0;
}
#endif

} // namespace
