/// \file
/// TobjArray: the array of elements that are constructed, copied and destroyed by code of their own.
///
/// Use TtypedObjArray to make an array of such a class; derive from TobjArray itself where elements are known only at
/// run time. A change costs a virtual call or two for a whole range of elements; only filling an array with copies of
/// one value costs a call for each.

#pragma once

#include "Foundation/Container/Tarray.h"

/// A Tarray whose elements live and die through hooks.
///
/// The hooks here treat elements as bytes. A derived class overrides them and, since its hooks are gone when the base
/// is destroyed, calls changePhysicalSizeTo(0) in its destructor. It holds at most 2^31 - 1 elements.
///
/// Only construct() and initialize() may throw; the array is then as it was.
class FOUNDATION_API TobjArray : public Tarray
{
public:
  /// An empty array without a buffer. With \p movesBitwise an element may be moved to another address as bytes, so
  /// that a buffer can be reallocated; otherwise it is copied there by initialize() and then destroyed.
  TobjArray(unsigned int elementSize, unsigned int sizeIncrement, bool movesBitwise);

  TobjArray& operator=(const TobjArray& other);
  TobjArray& operator=(TobjArray&& other) noexcept = default;

  /// As Tarray's, with elements that construct() made.
  long create(unsigned int count, unsigned int increment) override;

  long changePhysicalSizeTo(unsigned int size) override;
  long createAndInitialise(void* value, unsigned int count, unsigned int increment) override;

protected:
  /// Brings the elements from index \p from on to life, in place.
  virtual void construct(unsigned int from, unsigned int count);

  /// Ends the life of the elements from index \p from on.
  virtual void destruct(unsigned int from, unsigned int count);

  /// Moves the elements from index \p from on by \p by places, up or down, within the buffer. The places that they
  /// come to hold nothing before, those that they leave hold nothing after.
  virtual void shuffle(unsigned int from, int by, unsigned int count);

  /// Makes copies at \p to, which holds nothing, of the elements at \p from, all or none. They do not overlap.
  virtual void initialize(char* to, char* from, unsigned int count);

  /// Ends the life of the elements at the address \p at.
  virtual void destroy(char* at, unsigned int count);

  long allocateArray(unsigned int size) override;

  /// As Tarray's; elements that come are made by construct(), those that go are given to destruct().
  long expandArray(unsigned int length) override;

public:
  long removeAt(unsigned int index, unsigned int count = 1);

protected:
  /// An empty array of the same kind: the elements cannot be copied before the hooks are there.
  TobjArray(const TobjArray& other) noexcept;

  /// Takes over the buffer.
  TobjArray(TobjArray&& other) noexcept = default;

  long insertElement(const void* source, unsigned int index, unsigned int count);
  long copyElements(unsigned int at, const void* source, unsigned int count);

  char* copyOfElements() const;

private:
  void makeRoom(unsigned int length);

  bool fMovesBitwise; // fixed
};
