/// \file
/// TargList: the arguments of a call, as numbers, times or texts.
///
/// Use it where a caller and a callee agree on arguments only at run time, and to write values as text that reads back
/// as the same values. Each list holds arguments of one kind and gives each as another kind if it can.

#pragma once

#include "Foundation/Container/NumberArrays.h"
#include "Foundation/Container/StringArrays.h"
#include "Foundation/Data/TargType.h"
#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"
#include "Foundation/Time/TanimTime.h"

#include <iosfwd>
#include <utility>

class Tmetaclass;

/// A list of arguments.
///
/// Arguments count from 0. What asks for one returns false, and leaves its result untouched, beyond the last one and
/// where the argument has no such value. As a string it may throw TmemoryException.
///
/// | as      | from a number               | from a time       | from a text                          |
/// |---------|-----------------------------|-------------------|--------------------------------------|
/// | Double  | itself                      | seconds           | that is a number                     |
/// | Int32   | a whole one, in range       | whole seconds     | that is a whole number, in range     |
/// | Time    | seconds, the nearest tick   | itself            | ticks, or seconds without a 't'      |
/// | String  | shortest that reads back    | ticks and a 't'   | itself                               |
///
/// Numbers as text: "0.1", "-1e+300", "inf", "-inf", and "nan:" with the 16 hexadecimal digits of its bits for what is
/// no number. 9000 ticks are "9000t". Nothing depends on the locale.
class FOUNDATION_API TargList
{
public:
  /// What type() calls the kinds.
  enum Code
  {
    kNumber = 1,
    kTime,
    kText
  };

  /// A flag of appendAll().
  static constexpr unsigned long kQuoteAll = 1;

  virtual Tmetaclass* typeof() const;
  virtual void* cast(Tmetaclass* type);
  virtual ~TargList() = default;

  virtual unsigned int length() const noexcept = 0;

  /// A single value of the list's kind; no argument beyond the last one.
  TargType type(unsigned int index) const noexcept { return index < length() ? TargType(code()) : TargType(); }

  virtual bool asDouble(unsigned int index, double& value) const noexcept = 0;
  virtual bool asInt32(unsigned int index, Tint32& value) const noexcept;
  virtual bool asTime(unsigned int index, TanimTime& value) const noexcept;
  virtual bool asString(unsigned int index, Tstring& value) const = 0;

  /// Appends all arguments with a blank between each two, as TstringArgList::setText() reads them. Texts get quotes
  /// where they need them, or, with kQuoteAll, everywhere. Throws TmemoryException, \p text is empty or cut short then.
  virtual void appendAll(Tstring& text, unsigned long flags = 0) const;

  static void* construct(Tmetaclass* type);
  static Tmetaclass* fTypeid;

protected:
  TargList() = default;
  TargList(const TargList&) = default;
  TargList& operator=(const TargList&) = default;

private:
  virtual int code() const noexcept = 0;
  virtual void append(Tstring& text, unsigned int index, unsigned long flags) const;
};

/// What appendAll() appends.
FOUNDATION_API std::ostream& operator<<(std::ostream& out, const TargList& list);

static_assert(sizeof(TargList) == sizeof(void*), "a list's base is its table of virtual operations");

class FOUNDATION_API TdoubleArgList : public TargList
{
public:
  explicit TdoubleArgList(TdoubleArray values = TdoubleArray())
    : fValues(std::move(values))
  {
  }

  TdoubleArray& values() noexcept { return fValues; }
  const TdoubleArray& values() const noexcept { return fValues; }

  unsigned int length() const noexcept override { return fValues.length(); }
  bool asDouble(unsigned int index, double& value) const noexcept override;
  bool asString(unsigned int index, Tstring& value) const override;

private:
  int code() const noexcept override { return kNumber; }

  TdoubleArray fValues;
};

class FOUNDATION_API TtimeArgList : public TargList
{
public:
  explicit TtimeArgList(TanimTimeArray values = TanimTimeArray())
    : fValues(std::move(values))
  {
  }

  TanimTimeArray& values() noexcept { return fValues; }
  const TanimTimeArray& values() const noexcept { return fValues; }

  unsigned int length() const noexcept override { return fValues.length(); }
  bool asDouble(unsigned int index, double& value) const noexcept override;
  bool asTime(unsigned int index, TanimTime& value) const noexcept override;
  bool asString(unsigned int index, Tstring& value) const override;

private:
  int code() const noexcept override { return kTime; }

  TanimTimeArray fValues;
};

/// \code
///   TstringArgList call;
///   double angle;
///   if (call.setText("rotate 22.5 \"left arm\"") && call.asDouble(1, angle))
///     rotate(call.values()[2], angle);
/// \endcode
class FOUNDATION_API TstringArgList : public TargList
{
public:
  explicit TstringArgList(TstringArray values = TstringArray())
    : fValues(std::move(values))
  {
  }

  TstringArray& values() noexcept { return fValues; }
  const TstringArray& values() const noexcept { return fValues; }

  /// Makes the arguments those of \p text. White space, that of the C locale, separates them. One that begins with a
  /// quote ends with the next one and may hold white space and the escapes that Tstring::decodeEscapeSequences()
  /// knows, \\" and \\\\ among them; in any other, quotes and '\\' stand for themselves. False, with the list as it
  /// was, when the closing quote is missing or something adjoins it. Throws TmemoryException with the list as it was.
  bool setText(const Tstring& text);

  unsigned int length() const noexcept override { return fValues.length(); }
  bool asDouble(unsigned int index, double& value) const noexcept override;
  bool asInt32(unsigned int index, Tint32& value) const noexcept override;
  bool asTime(unsigned int index, TanimTime& value) const noexcept override;
  bool asString(unsigned int index, Tstring& value) const override;

private:
  int code() const noexcept override { return kText; }
  void append(Tstring& text, unsigned int index, unsigned long flags) const override;

  TstringArray fValues;
};
