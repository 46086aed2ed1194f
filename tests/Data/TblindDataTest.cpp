#include "Foundation/Data/TblindData.h"
#include "Foundation/Data/Tmetaclass.h"
#include "Foundation/Data/TpreferenceItem.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace {

TEST(TblindData, TellsKindsIdsAndValuesApart)
{
  int target = 0;
  TblindBooleanData truth(true, 7);
  TblindInt32Data whole(1, 7);
  TblindPointerData pointer(&target, 7);
  TblindStringData text("1", 7);
  TblindDoubleData number(1, 7);
  const TblindData* const all[] = {&truth, &whole, &pointer, &text, &number};
  for (const TblindData* data : all)
  {
    const std::unique_ptr<TblindData> copy(data->copy());
    const std::unique_ptr<TblindData> fresh(static_cast<TblindData*>(TblindData::construct(data->typeof())));
    fresh->setId(7);
    EXPECT_TRUE(*fresh != *data && fresh->typeof() == data->typeof()); // has another value
    for (const TblindData* other : all)
    {
      EXPECT_EQ(*copy == *other, data == other) << *data << *other;
      EXPECT_EQ(copy->cast(other->typeof()), data == other ? copy.get() : nullptr);
    }
    EXPECT_EQ(copy->cast(TblindData::fTypeid), copy.get());
    copy->setId(8);
    EXPECT_FALSE(*copy == *data);
  }
  std::ostringstream out;
  out << text;
  EXPECT_EQ(out.str(), "TblindStringData 7: 1");
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
  EXPECT_TRUE(item.cast(Tmetaclass::findClass("TpreferenceItem")) == &item && item.typeof()->size() == 20);
}

} // namespace
