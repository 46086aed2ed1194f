#include "Foundation/Data/TblindData.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Data/TpreferenceItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

namespace {

TEST(TblindData, TellsKindsIdsAndValuesApart)
{
  int target = 0;
  std::ostringstream address;
  address << static_cast<void*>(&target);
  TblindBooleanData truth(true, 7);
  TblindInt32Data whole(1, 7);
  TblindPointerData pointer(&target, 7);
  TblindStringData text("1", 7);
  TblindDoubleData number(1, 7);
  const struct
  {
    TblindData& data;
    const char* name;
    std::string value;
  } cases[] = {
    {truth, "TblindBooleanData", "1"}, {whole, "TblindInt32Data", "1"},   {pointer, "TblindPointerData", address.str()},
    {text, "TblindStringData", "1"},   {number, "TblindDoubleData", "1"},
  };
  for (const auto& each : cases)
  {
    Tmetaclass* const kind = each.data.typeof();
    const std::unique_ptr<TblindData> copy(each.data.copy());
    EXPECT_EQ(each.data.cast(TblindData::fTypeid), &each.data);
    const std::unique_ptr<TblindData> fresh(static_cast<TblindData*>(TblindData::construct(kind)));
    fresh->setId(7);
    EXPECT_TRUE(fresh->typeof() == kind && *fresh != each.data); // has another value
    for (const auto& other : cases)
    {
      EXPECT_EQ(*copy == other.data, &each == &other) << each.name << ' ' << other.name;
      EXPECT_EQ(copy->cast(other.data.typeof()) != nullptr, &each == &other);
    }
    std::ostringstream out;
    out << *copy;
    EXPECT_EQ(out.str(), std::string(each.name) + " 7: " + each.value);
    copy->setId(8);
    EXPECT_FALSE(*copy == each.data);
  }
  EXPECT_FALSE(TblindData::construct(TblindData::fTypeid) || TblindInt32Data::construct(truth.typeof()));
}

TEST(TpreferenceItem, KnowsWhetherItMustBeSaved)
{
  TpreferenceItem item("snap", "on");
  item.reset();
  EXPECT_FALSE(item.isChanged());
  item.setValue("off");
  item.setValue("off");
  EXPECT_TRUE(item.isChanged() && !item.isDefault());
  item.setUnchanged();
  item.reset();
  EXPECT_TRUE(item.isChanged() && item.isDefault() && item.value() == "on");
  EXPECT_TRUE(item.cast(Tmetaclass::findClass("TpreferenceItem")) == &item);
}

} // namespace
