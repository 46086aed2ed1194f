// What gdb is asked to show: see gdb.sh.
#include <Foundation/Foundation.h>

#include <cstdlib>
#include <new>

struct Mark : TptrHashTableEntry
{
  int fUses;
};
struct Marks : ThashTableOf<Mark, TptrHashTable>
{};

struct Node : TdictionaryNode
{
  explicit Node(int part)
    : fPart(part)
  {
  }
  int compare(TdictionaryNode& other) override { return fPart - static_cast<Node&>(other).fPart; }
  void setValue(TdictionaryNode&) override {}
  TdictionaryNode* clone(long level) override
  {
    return new (std::calloc(1, sizeof *this + std::size_t(level) * sizeof(TdictionaryNode*))) Node(fPart);
  }
  void destroy() override { std::free(this); }
  TdictionaryNode*& forward(long i) override { return reinterpret_cast<TdictionaryNode**>(this + 1)[i]; }

  int fPart;
};
struct Parts : TdictionaryOf<Node>
{
  void insert(Node node) { insertNode(node); }
};

int main()
{
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): for the count of shares
  const Tstring empty, blank(5), text("left \"arm\"\n"), sharing = text;
  const TcharString borrowed("borrowed");
  const TiffTagArray tags{TiffTag::kCAT, TiffTag::kFORx};

  TdoubleArray numbers{1.5, 2};
  numbers.addLast(-3);
  const TstringArray texts{text, "b"};
  TtypedStack<Tint32> stack;
  stack.push(7);
  stack.push(8);

  Mark mark{};
  mark.fUses = 7;
  Marks marks;
  marks.insert(&mark, nullptr);
  Parts none, parts;
  for (const int part : {3, 1, 2})
    parts.insert(Node(part));

  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): for the count of holders
  const Tname nameless, arm("arm9"), copy = arm;
  const TnameString key("b10");
  TnameDictionary names;
  names.insert(key, TnameInfo());
  names.insert(TnameString("b9"), TnameInfo());
  TstringHashTable colours;
  colours.insert("lamp", "white");

  const T3dFltPoint corner(1, 2.5, -3);
  const T3dDblPointArray corners{{1, 2, 3}};
  const T4dDblMatrix moved = T4dDblVector(7, 8, 9);
  const Tangle right(90, Tangle::kDegrees);

  const TtimeRange range(-250, 9000);
  const TtimeValueArray keys{{6000, 1.5}};
  const TtimeUnit unit(kTime30Fps);
  const Tduration span(95399);
  const Ttime end(951868799);
  const TosTime ticks(40);

  const TblindInt32Data blind(42, 7);
  Tfile file("/dev/null", "w");
  file.put("abc");
  const Tdata number(1.5), time{TanimTime(120)}, nothing(static_cast<TdataLetter*>(nullptr));
  Tdata tuple(new Tdata2Double(1, 2.5));
  tuple.makeWritable();
  const Tdata turned(new TdataMatrix(moved)), list(new TdataDoubleArray(numbers)), odd(new TdataUnknown("ODD#"));
  static_cast<TdataUnknown*>(odd.privateDataStar())->bytes().addLast(65);
  const Tdata tree(new TdataCompound);
  auto* children = static_cast<TdataCompound*>(tree.privateDataStar());
  for (const Tdata& child : {number, tuple})
    children->addData(child);

  const bool good = corner.x() == 1 && right.degrees() == 90 && range.contains(0) && unit.ticksPerUnit() == 200 &&
                    end - span != Ttime() && ticks.ticks() == 40;
  return good ? 0 : 1; // stop here
}
