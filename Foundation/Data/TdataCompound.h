/// \file
/// TdataCompound: a sequence of values of any kinds, and so the node of a tree of values.

#pragma once

#include "Foundation/Data/Tdata.h"

#include <optional>

/// A letter with children. In a file it is a group, which has an id and a type besides: "FOR4" and the tag of its kind
/// as long as nobody says otherwise.
///
/// \code
///   Tdata scene(new TdataCompound);
///   TdataCompound* children = scene.writableAs<TdataCompound>();
///   children->addData(1.5);
///   children->addData(Tdata(new TdataMatrix));
///   (*children)[0].doubleValue();
/// \endcode
///
/// Compounds compare child by child, the first difference decides; sums and so on are made child by child, for as many
/// children in both, and whatever kinds of compounds they are. Products and quotients with one number concern all
/// children. The traps: a compound within itself is never freed, and what walks it does not end; one that a program
/// nests some ten thousand deep exhausts the stack when it is walked or freed.
///
/// A kind that derives from it is read from groups whose type is its tag, and from text, as a compound of that kind.
/// One that stands in files as a chunk of its own, as tuples do, has a fixed length.
class FOUNDATION_API TdataCompound : public TdataLetter
{
public:
  /// Levels of compounds in each other that can be read and written.
  static constexpr unsigned int kMostLevels = 200;

  /// \p length times 0.0. Throws TmemoryException, as does all that adds children.
  explicit TdataCompound(unsigned int length = 0);

  /// Copies of the children, whose letters are copied as well.
  TdataCompound(const TdataCompound& other);
  TdataCompound& operator=(const TdataCompound& other);

  unsigned int length() const noexcept { return fChildren.length(); }

  /// Makes it \p length children; new ones are 0.0. False, and nothing changes, for kinds with a length of their own.
  bool resize(unsigned int length);

  /// The child at \p index, which is not checked.
  const Tdata& operator[](unsigned int index) const noexcept { return fChildren[index]; }

  /// The letter of the child at \p index, to be changed: the child becomes its writer. Null when there is no such
  /// child, or its letter is no \p type. Throws TmemoryException.
  TdataLetter* operator()(unsigned int index, Tmetaclass* type);

  /// Appends a child; of a letter, a holder. False for kinds with a length of their own.
  bool addData(const Tdata& data);

  /// Makes the child at \p index the value, or a copy of it that shares no letter. False when there is no such child.
  /// Throws TbadDataCast when the kind has other values.
  bool setData(unsigned int index, const Tdata& data);
  bool copyData(unsigned int index, const Tdata& data);

  const Tdata* begin() const noexcept { return fChildren.begin(); }
  const Tdata* end() const noexcept { return fChildren.end(); }

  /// Whether the kind has a length and values of its own, which cannot be added or taken away.
  virtual bool hasFixedLength() const;

  /// Id and type of the group that stands for the compound in a file; a fixed length has no use for them. False, and
  /// nothing changes, for an id that is none of a group and a type whose top bit is set.
  TiffTag groupId() const noexcept { return fGroupId; }
  TiffTag groupType() const { return fGroupType.value_or(iffTag()); }
  bool setGroup(TiffTag id, TiffTag type) noexcept;

  void reset() override;
  TdataLetter* copy() const override;
  Tmetaclass* typeof() const override;
  void* cast(Tmetaclass* type) override;
  void _getFootprint(TfootprintInfo& info) const override;
  TorderOfData compare(const TdataLetter& other) const override;
  long readASCII(TargList& arguments, unsigned int& next, long count) override;
  long readBinary(TiffTag tag, unsigned long& size, void*& data) override;
  long writeBinary(TiffFile& file) override;

  void appendText(Tstring& text, long perLine) const override;
  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  bool combine(ToperationOnData operation, const TdataLetter& other) override;
  bool scale(ToperationOnData operation, double number) override;

  /// What a kind with a fixed length may override: the value that \p data becomes as a child. Throws TbadDataCast when
  /// there is none.
  virtual Tdata accepted(const Tdata& data) const;

  TDarray fChildren;

private:
  template <class Operation>
  bool replaceChildren(Operation operation);
  long writeGroup(TiffFile& file);

  TiffTag fGroupId = TiffTag::kFOR4;
  std::optional<TiffTag> fGroupType; // without one, the tag of the kind
};
