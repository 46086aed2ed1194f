#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Container/PtrArrays.h"
#include "Foundation/Data/TargType.h"
#include "Foundation/Data/TtypeDictionary.h"
#include "tests/FailingMemory.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <sstream>

namespace {

TEST(Tmetaclass, RecordsEveryClassOfTheLibrary)
{
  // Size, parents, ":", and the names, each with its tag; "!" stands before classes that cannot be made.
  const char* const records[] = {
    "16 : Tdata DBLE TdataNumeric -",
    "32 : TdataLetter -",
    "56 TdataLetter : TdataCompound CMPD TdataUnknown UNKN",
    "56 TdataCompound : double2 DBL2 float2 FLT2 short2 SRT2 long2 LNG2",
    "56 TdataCompound : double3 DBL3 float3 FLT3 short3 SRT3 long3 LNG3",
    "44 TdataLetter : doubleArray DBL# Int32Array I32# vectorArray VEC# reflectanceRGB RRGB spectrumRGB SRGB",
    "40 TdataLetter : matrix MATR",
    "8 : !TblindData -",
    "12 TblindData : TblindBooleanData - TblindInt32Data - TblindPointerData - TblindStringData -",
    "16 TblindData : TblindDoubleData -",
    "4 : !Tclient - !TserverMsg - !Texception - !TdictionaryNode - !arglist -",
    "12 : !TclientServer -",
    "12 TclientServer : !TmessageCenter -",
    "16 TclientServer : !TdelayedClientServer -",
    "20 TclientServer : !Ttrigger -",
    "20 Ttrigger : !Tcondition -",
    "24 Tcondition Tclient : !TclientCondition -",
    "4 TserverMsg : TserverModifiedMsg - TserverDeletedMsg - TtriggerMsg - TconditionChangedMsg -",
    "4 TconditionChangedMsg : TconditionOnMsg - TconditionOffMsg -",
    "4 TserverModifiedMsg : TviewRegionModifiedMsg - TmaxViewRegionModifiedMsg -",
    "4 Texception : !TmemoryException - !TbadDataCast - !TincompatibleData -",
    "8 Texception : !ThandledException - !TfailedException - !TunimplementedException - !TfileException -",
    "260 Texception : !TresourceException -",
    "28 : !filesystem -",
    "28 filesystem : !Tdirectory -",
    "28 Tdirectory : !TappDirectory - !TtemporaryDirectory - !TpreferencesDirectory - !TuserBitmapsDirectory -",
    "28 Tdirectory : !TuserScriptDirectory - !TuserShelfDirectory -",
    "1256 filesystem : !TfileStream -",
    "44 : !file -",
    "72 TdictionaryNode : !Tdictionary -",
    "16 TdictionaryNode : !TtypeDictionaryNode -",
    "20 TdictionaryNode : !TnameDictionaryNode -",
    "72 Tdictionary : !TtypeDictionary - !TnameDictionary -",
    "16 : !TnameObject -",
    "20 : !TpreferenceItem -",
  };
  for (const char* each : records)
  {
    std::istringstream words(each);
    std::string start, name, tag;
    for (std::string word; words >> word && word != ":";)
      start += word + ' ';
    while (words >> name >> tag)
    {
      const bool isAbstract = name[0] == '!';
      const Tmetaclass* const record = Tmetaclass::findClass(name.c_str() + isAbstract);
      ASSERT_TRUE(record) << name;
      std::string found = std::to_string(record->size()) + ' ';
      for (unsigned i = 0; i < record->superCount(); ++i)
        found += std::string(record->super(i)->name()) + ' ';
      EXPECT_EQ(found, start) << name;
      EXPECT_EQ(record->isAbstract(), isAbstract) << name;
      EXPECT_EQ(record->tag(), tag == "-" ? TiffTag() : TiffTag(tag.c_str())) << name;
    }
  }
}

// "lamp" and "shape" are roots; "spot" is a lamp; "both" is both; "wide" has all four for parents.
struct Lattice
{
  Lattice()
  {
    for (int i = 0; i < 300; ++i)
      between.emplace_back(nullptr, "stranger", 1, nullptr, 0, 0);
    shape = std::make_unique<Tmetaclass>(nullptr, "shape", 12, nullptr, 0, 0);
    pointers[4] = shape.get();
  }

  // The pointers hold their value before the parents are made.
  Tmetaclass* pointers[5] = {&wide, &both, &spot, &lamp, nullptr};
  Tmetaclass** parents = pointers;
  Tmetaclass wide{nullptr, "wide", 100, nullptr, 0, 0, parents + 1, parents + 2, parents + 3, parents + 4};
  Tmetaclass both{nullptr, "both", 30, nullptr, 0, 0, parents + 3, parents + 4};
  Tmetaclass spot{nullptr, "spot", 20, nullptr, 0, 0, parents + 3};
  Tmetaclass lamp{nullptr, "lamp", 8, nullptr, 0, 0};
  std::list<Tmetaclass> between; // ids far apart
  std::unique_ptr<Tmetaclass> shape;
};

TEST(Tmetaclass, KnowsItsKin)
{
  const Lattice lattice;
#if FAILING_MEMORY
  failAllocations(0, INT_MAX); // the first question is answered without a table
  const bool isa = lattice.wide.isa(lattice.shape.get());
  failAllocations(0, 0);
  EXPECT_TRUE(isa);
#endif
  const char* const expected[] = {"wbsls", "bls", "sl", "l", "s"}; // the initials of what each is
  for (int i = 0; i < 5; ++i)
  {
    const Tmetaclass& record = *lattice.pointers[i];
    std::string kin;
    for (const Tmetaclass* other : lattice.pointers)
    {
      kin.append(other->name(), record.isa(other));
      EXPECT_EQ(record.isa(other->name()), record.isa(other));
    }
    EXPECT_EQ(kin, expected[i]);
    EXPECT_FALSE(record.isa(&lattice.between.back()) || record.isa("stranger"));
  }
  EXPECT_FALSE(lattice.wide.super(4));
  Tmetaclass copy(lattice.both); // with a table of its own
  EXPECT_TRUE(copy.isa(lattice.shape.get()));
  copy = lattice.spot;
  EXPECT_TRUE(copy.isa(&lattice.lamp) && !copy.isa(lattice.shape.get()));
}

TEST(Tmetaclass, FindsTheFirstOfEqualRecords)
{
  constexpr TiffTag tag("tst1");
  auto first = std::make_unique<Tmetaclass>(nullptr, "twice", 1, nullptr, tag.value(), 0);
  Tmetaclass second(nullptr, "twice", 2, nullptr, tag.value(), 0);
  Tmetaclass* parent = &second;
  const std::list<Tmetaclass> many(1000, second); // copies are in no table
  Tmetaclass third(nullptr, "twice", 3, nullptr, tag.value(), 0, &parent);
  EXPECT_EQ(Tmetaclass::findClass("twice"), first.get());
  EXPECT_EQ(Tmetaclass::findClass("twice", &second), &second);
  EXPECT_EQ(Tmetaclass::findClass("twice", &third), &third);
  EXPECT_EQ(Tmetaclass::findClass(tag), first.get());
  first.reset();
  EXPECT_EQ(Tmetaclass::findClass("twice"), &second);
  EXPECT_EQ(Tmetaclass::findClass(tag), &second);

  // A record that is changed is found as what it is now.
  second = Tmetaclass(nullptr, "other", 2, nullptr, 0, 0);
  EXPECT_EQ(Tmetaclass::findClass("other"), &second);
  EXPECT_EQ(Tmetaclass::findClass(tag), &third);

  Tmetaclass* untagged = Tmetaclass::findClass(TiffTag());
  EXPECT_TRUE(untagged && untagged->tag() == TiffTag());
  EXPECT_FALSE(Tmetaclass::findClass(nullptr) || Tmetaclass::findClass("nobody") ||
               Tmetaclass::findClass("nobody", &third) || Tmetaclass::findClass(TiffTag("none")));
}

TEST(Tmetaclass, ListsWhatDerives)
{
  Lattice lattice;
  TtypeidArray derived;
  Tmetaclass::getDerivedClasses(&lattice.lamp, derived);
  std::string inOrder;
  for (const Tmetaclass* record : derived)
    inOrder += std::string(record->name()) + ' ';
  EXPECT_EQ(inOrder, "wide spot wide both wide lamp "); // on each way to it
  Tmetaclass::getDerivedClasses(nullptr, derived);
  EXPECT_EQ(derived.length(), 6u);

  const std::unique_ptr<TtypeDictionary> dictionary(Tmetaclass::generateDictionaryFor(lattice.shape.get()));
  inOrder.clear();
  for (const TtypeDictionaryNode& node : *dictionary)
    inOrder += std::string(node.key().asC()) + ' ';
  EXPECT_EQ(inOrder, "both shape wide ");
  EXPECT_EQ(*dictionary->search("both"), &lattice.both);

  testing::internal::CaptureStdout();
  Tmetaclass::dumpAllClassesDerivedFrom(&lattice.spot, 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            ". spot:  +12 = 20    (abstract)\n. . wide:  +30 = 100    (abstract)\n");
}

// Twenty-four diamonds one on another: millions of ways to the root.
TEST(Tmetaclass, VisitsEachAncestorOnce)
{
  std::list<Tmetaclass> records;
  Tmetaclass* pointers[49];
  for (int i = 0; i < 49; ++i)
    pointers[i] = &records.emplace_back(nullptr, i == 0 ? "root" : "step", 1, nullptr, 0, 0,
                                        i < 1 ? nullptr : &pointers[i - (i % 2 ? 1 : 2)],
                                        i < 3 ? nullptr : &pointers[i - (i % 2 ? 2 : 3)]);
  EXPECT_TRUE(records.back().isa(&records.front()) && records.back().isa("root"));
  EXPECT_FALSE(records.back().isa("branch"));
}

TEST(TmetaclassDeathTest, RunsOutOfIds)
{
  EXPECT_EXIT(
    {
      Tmetaclass parent(nullptr, "parent", 1, nullptr, 0, 0);
      Tmetaclass* pointer = &parent;
      std::list<Tmetaclass> records;
      for (int i = 0; i < 65536; ++i)
        records.emplace_back(nullptr, i == 65535 ? "refused" : "taken", 1, nullptr, 0, 0, &pointer);
      Tmetaclass* last = &records.back();
      Tmetaclass child(nullptr, "child", 1, nullptr, 0, 0, &last);
      std::exit(child.isa(last) && child.isa(&parent) && !child.isa(&records.front()) && !last->isa(&child) &&
                !Tmetaclass::findClass("refused"));
    },
    testing::ExitedWithCode(1), "no type id is left for class refused");
}

TEST(TargType, comparesTypesNotCounts)
{
  TargType type(5, 2);
  EXPECT_TRUE(type == TargType(5, 7, 9) && type != 5 && TargType(5) == 5);
  type.setArray(3, 4);
  type.setArray();
  type = TargType(6); // keeps the counts, which mean nothing now
  EXPECT_TRUE(type == 6 && type.minCount() == 3 && type.maxCount() == 4);
}

} // namespace
