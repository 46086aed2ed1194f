#include "tests/FailingMemory.h"

#include "Foundation/String/TcharString.h"
#include "Foundation/String/Tstring.h"
#include "Foundation/String/TstringCount.h"
#include "Foundation/String/TstringId.h"
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <random>
#include <sstream>
#include <tuple>
#include <unordered_map>
#include <vector>

#ifdef __GLIBC__
#  include <malloc.h>
#  include <pthread.h>
#  include <thread>
#endif

namespace {

// A string is one pointer to its buffer, so the tests can look at the buffer as any owner would.
const Tstring::TstringData* data(const Tstring& string)
{
  const Tstring::TstringData* result;
  std::memcpy(&result, static_cast<const void*>(&string), sizeof result);
  return result;
}

TuInt32 shares(const Tstring& string)
{
  return data(string) ? data(string)->fCount : 0;
}

unsigned long capacity(const Tstring& string)
{
  return data(string) ? data(string)->fCapacity : 0;
}

void expectSound(const Tstring& string)
{
  if (!data(string))
    return;
  ASSERT_GE(shares(string), 1u);
  ASSERT_LE(string.length(), capacity(string));
  ASSERT_EQ(string.asC()[string.length()], '\0');
}

} // namespace

TEST(Tstring, sizesItsBuffersByTwoRules)
{
  EXPECT_EQ(data(Tstring(0u)), nullptr);
  EXPECT_EQ(data(Tstring("")), nullptr);
  for (const unsigned n : {1u, 4u, 5u, 24u, 25u, 44u, 1000u, 1024u, 5000u, 100000u})
    EXPECT_EQ(capacity(Tstring(n)), (n + 35) / 20 * 20 - 16) << n;
  Tstring text("abcde");
  EXPECT_EQ(capacity(text), 24u);
  text.reserve(30);
  EXPECT_EQ(capacity(text), 32u);
  for (const unsigned n : {60u, 1021u, 1100u, 1101u, 70000u, 1500u, 40u})
  {
    text.resize(n);
    EXPECT_EQ(capacity(text), ((n + 20) & ~3u) - 16) << n;
    EXPECT_EQ(text, "abcde");
  }
  text.resize(3);
  EXPECT_EQ(text, "abc");
  text.clear();
  EXPECT_EQ(capacity(text), 4u);
}

TEST(Tstring, splitsOffWhatItChangesAndNothingElse)
{
  const std::tuple<void (*)(Tstring&), const char*, const char*> cases[] = {
    {[](Tstring& s) { s.append(""), s.append(Tstring()), s.append(nullptr, 4); }, "a b", "a b"},
    {[](Tstring& s) { s.append(s), s += s.asC() + 3; }, "abc", "abcabcabc"},
    {[](Tstring& s) { s.substring(2, 100, s); }, "abcdef", "cdef"},
    {[](Tstring& s) { s = *&s, s.set(s); }, "ab", "ab"},
    {[](Tstring& s) { s.reserve(100, 0); }, "ab", ""},
    {[](Tstring& s) { s.append(s.asC(), s.length() + 1), s.resize(s.length() - 1); }, "abc", "abcabc"},
    {[](Tstring& s) { s.removeSpaces(); }, " a\t\xE4 b\n", "a\xE4\142"},
    {[](Tstring& s) { s.removeInitialAndFinalSpaces(); }, "  \ta b  ", "\ta b"},
    {[](Tstring& s) { s.removeInitialAndFinalSpaces(); }, "   ", ""},
    {[](Tstring& s) { s.collapseWhiteSpace(); }, " \na \t b\tc ", "a b c"},
    {[](Tstring& s) { s.collapseWhiteSpace(); }, "a  b", "a b"},
    {[](Tstring& s) { s.collapseWhiteSpace(); }, " \t ", ""},
    {[](Tstring& s) { s.capitalize(); }, "Ab", "Ab"},
    {[](Tstring& s) { s.toUpperCase(); }, "a1B", "A1B"},
    {[](Tstring& s) { s.substitute("aa", "ba"); }, "aaaaa", "babaa"},
    {[](Tstring& s) { s.substitute(s.substring(0, 0), ""); }, "abcab", "bcb"},
    {[](Tstring& s) { s.substitute(s, s + s); }, "ab", "abab"},
    {[](Tstring& s) { s.substitute("", "x"), s.substitute("ba", "x"); }, "ab", "ab"},
    {[](Tstring& s) { s.decodeEscapeSequences(); }, "\\n\\101\\x4A\\q\\\\\\0610\\xg\\", "\nAJq\\10xg\\"},
    {[](Tstring& s) { s.encodeEscapeSequences(0); }, "\n\"\x01\xFF\\", "\\n\\\"\\001\xFF\\\\"},
    {[](Tstring& s) { s.encodeEscapeSequences(1); }, "a\200\1770", "a\\200\\1770"},
    {[](Tstring& s) { s.stripExtension(); }, "a.b.c", "a.b"},
    {[](Tstring& s) { s.stripPath(); }, "/a/b/", "b"},
    {[](Tstring& s) { Tstring::format(&s, "%s-%s", s.asC(), s.asC()); }, "ab", "ab-ab"},
    {[](Tstring& s) { s.matchesRegexp(".((.)c)", &s, &s); }, "abc", "b"},
  };
  for (const auto& [change, before, after] : cases)
  {
    for (const bool isShared : {false, true})
    {
      SCOPED_TRACE(std::string(before) + " -> " + after);
      Tstring string(before);
      const Tstring other = isShared ? string : Tstring();
      const TuInt32 left = string == after ? 2 : 1;
      change(string);
      EXPECT_EQ(string, after);
      expectSound(string);
      EXPECT_EQ(other, isShared ? before : "");
      EXPECT_EQ(shares(other), isShared ? left : 0);
    }
  }
}

TEST(Tstring, comparesFindsAndCuts)
{
  const Tstring text("abcdefabc");
  EXPECT_EQ(text.index('c', ULONG_MAX), -1);
  EXPECT_TRUE(Tstring("a?").isWildCard() && Tstring("*").isWildCard() && !text.isWildCard());
  EXPECT_EQ(text[ULONG_MAX], '\0');
  EXPECT_EQ(text.substring(3, 2) + text.substring(9, 9) + Tstring().substring(0, ULONG_MAX), "");
  EXPECT_EQ(data(text.substring(0, ULONG_MAX)), data(text));

  EXPECT_EQ(Tstring().compare(static_cast<const char*>(nullptr)), 0);
  EXPECT_LT(Tstring("Abc").caseCompare("aBD"), 0);
  EXPECT_TRUE(Tstring(4u).empty() && Tstring("a\0b", 3) != Tstring("a"));

  EXPECT_EQ(Tstring().hash(), 0xFFFFFFFFu);
  EXPECT_EQ(Tstring("abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGH").hash(), 0x1E078B34u);
  EXPECT_EQ(Tstring("\x80").hash(), 0xFFFFFF80u ^ (0xFFFFFF80u >> 10) ^ (0xFFFFFF80u >> 20));

  EXPECT_TRUE(TcharString("\xE4") < TcharString("a") && TcharString(nullptr) == TcharString(""));
  EXPECT_TRUE(TstringCount("a", 1) == TstringCount("a", 2));
}

TEST(Tstring, takesPathsApartAsPosixDoes)
{
  const char* const cases[][2] = {
    // with extension, root, base name and directory
    {"name", "|name|name|."},  {"a.b.c", "c|a.b|a.b.c|."}, {".profile", "profile||.profile|."},
    {"/usr/", "|/usr/|usr|/"}, {"//", "|//|/|/"},          {"", "||.|."},
    {"a//b//", "|a//b//|b|a"}, {"..", "|.|..|."}};
  for (const auto& [text, parts] : cases)
  {
    const Tstring path(text);
    EXPECT_EQ(path.extension() + "|" + path.root() + "|" + path.baseName() + "|" + path.directoryPath(), parts) << text;
  }
  const std::string deep(5000, 'd');
  EXPECT_EQ(Tstring("/" + deep + "/x/y").directoryPath(), "/" + deep + "/x");
}

TEST(Tstring, readsAndWritesNumbers)
{
  const char* const cases[][2] = {// whether integer, unsigned, double, and as what
                                  {" -42 ", "101 -42 4294967254 -42"},
                                  {"", "000 0 0 0"},
                                  {"\t+7\t", "111 7 7 7"},
                                  {"\n7", "000 7 7 7"},
                                  {"99999999999", "111 2147483647 4294967295 99999999999"},
                                  {"-99999999999999999999", "101 -2147483648 4294967295 -100000000000000000000"},
                                  {"1.5e3 ", "001 1 1 1500"},
                                  {"0x1p4", "001 0 0 16"},
                                  {"4x", "000 4 4 4"}};
  for (const auto& [given, expected] : cases)
  {
    const Tstring number(given);
    std::ostringstream found;
    found.precision(25);
    found << number.isInt32() << number.isUInt32() << number.isDouble() << ' ' << number.asInt32() << ' '
          << number.asUInt32() << ' ' << number.asDouble();
    EXPECT_EQ(found.str(), expected) << given;
  }
  Tstring text("old");
  text.setInt32(INT32_MIN);
  EXPECT_EQ(text, "-2147483648");
  text.setUInt32(UINT32_MAX);
  EXPECT_EQ(text, "4294967295");
  EXPECT_EQ(Tstring("40000").asInt16() + Tstring("0.5").asFloat(), -25535.5F);
  const double value = 123456.789012;
  const std::pair<long, const char*> doubles[] = {
    {0, "123457"}, {LONG_MAX, "123456.78901199999381788074970245361328125"}, {LONG_MIN, "123457"}};
  for (const auto& [precision, expected] : doubles)
  {
    text.setDouble(value, precision);
    EXPECT_EQ(text, expected);
  }
  Tstring::format(&text, "%d|%5s|%-3c|%g|%+08.3Lf|%*.*e|%%|%ld", 7, "ab", 'c', 1.5, -2.25L, 9, 2, 0.001, LONG_MIN);
  EXPECT_EQ(text, "7|   ab|c  | 1.5|-2.25   | 0.001   |%|" + std::to_string(LONG_MIN));
  Tstring::format(&text, "%1000.400f|%s", 1e300, std::string(3000, 'x').c_str());
  EXPECT_EQ(text.length(), 4001u);
  Tstring::format(&text, nullptr);
  EXPECT_TRUE(text.empty());
}

TEST(Tstring, matchesPatterns)
{
  const char* const matching[][2] = {{"ac", "a*c"},    {"a*", "a\\*"}, {"abc", "a?c"}, {"abc", "**?"},
                                     {"abcbc", "*bc"}, {"a\\", "a\\"}, {"", nullptr},  {"mississippi", "m*is*p?i"}};
  for (const auto& [text, pattern] : matching)
    EXPECT_TRUE(Tstring(text).matches(pattern)) << text << " as " << (pattern ? pattern : "null");
  const char* const different[][2] = {{"abcd", "a*c"}, {"ab", "a\\*"}, {"ac", "a?c"},  {"a", ""},
                                      {"", ""},        {"", "*"},      {"a", nullptr}, {"ABC", "abc"}};
  for (const auto& [text, pattern] : different)
    EXPECT_FALSE(Tstring(text).matches(pattern)) << text << " as " << (pattern ? pattern : "null");
  EXPECT_FALSE(Tstring().matches(Tstring()));
  EXPECT_FALSE(Tstring(std::string(20000, 'a')).matches("*a*a*a*a*a*a*a*a*a*b")); // at once

  Tstring key, value, none("old");
  EXPECT_TRUE(Tstring("width = 12").matchesRegexp("([a-z]+) *= *([0-9]+)(x)?", &key, &value, &none));
  EXPECT_EQ(key + "," + value + "," + none, "width,12,");
  EXPECT_FALSE(Tstring("a1b").matchesRegexp("[0-9]"));
  EXPECT_FALSE(Tstring("a").matchesRegexp("(a"));
  EXPECT_TRUE(Tstring().matchesRegexp(nullptr));
  EXPECT_TRUE(Tstring(std::string(100000, 'a')).matchesRegexp("(a|b)*", &key));
}

TEST(Tstring, worksWithTheStandardLibrary)
{
  std::unordered_map<Tstring, int> map;
  map[Tstring(std::string_view("key"))] = 3;
  EXPECT_EQ(map.at("key"), 3);
  std::ostringstream out;
  out.width(5);
  out << Tstring("ab") << TcharString("c");
  EXPECT_EQ(out.str(), "   abc");
  const unsigned char* const pascal = Tstring(std::string(300, 'p')).asPascal();
  EXPECT_EQ(pascal[0] + pascal[255], 255 + 'p');
}

TEST(TstringId, isLookedUpWhenItIsAskedFor)
{
  struct Catalog : TstringCatalog
  {
    bool find(TuInt32 id, Tstring& text) const override { return id == 5 && text.set("five") == 0; }
  } const catalog;
  const TstringId known = TstringId::catalog(5), unknown = TstringId::catalog(6);
  Tstring text(known);
  EXPECT_EQ(text, "5");
  EXPECT_EQ(TstringCatalog::install(&catalog), nullptr);
  text = known;
  text.append(unknown);
  text += TstringId("x");
  text.catenate(TstringId(5));
  EXPECT_EQ(text, "five6x5");
  EXPECT_EQ(TstringCatalog::install(nullptr), &catalog);
}

// Random edits of strings that share their texts, beside std::string.
TEST(Tstring, agreesWithItsModel)
{
  std::mt19937 random(7);
  Tstring strings[4];
  std::string models[4];
  const auto number = [&](std::size_t limit) { return static_cast<unsigned long>(random() % (limit + 1)); };
  for (int step = 0; step != 20000; ++step)
  {
    const std::size_t i = number(3), j = number(3);
    Tstring& string = strings[i];
    std::string& model = models[i];
    const auto at = number(models[j].size());
    const auto count = number(models[j].size() - at);
    const std::string part = models[j].substr(at, count);
    const auto room = number(80);
    const auto c = static_cast<char>('a' + step % 26 * 5);
    const std::function<void()> edits[] = {
      [&] { string = strings[j], model = models[j]; },
      [&] { string = strings[j].substring(at, room), model = at > room ? "" : models[j].substr(at, room - at + 1); },
      [&] { string = Tstring(std::move(strings[j])), model = std::exchange(models[j], ""); },
      [&] {
        EXPECT_EQ(string.index(c, at), long(model.find(c, at)));
        EXPECT_EQ(string.rindex(c, at), long(model.rfind(c, at)));
        EXPECT_EQ(string.findstr(Tstring(part)), model.empty() ? -1 : long(model.find(part)));
        EXPECT_EQ(string.compare(strings[j]), std::clamp(model.compare(models[j]), -1, 1));
      },
      [&] { string.append(strings[j].asC() + at, count), model += part; },
      [&] { string.set(strings[j].asC() + at, count), model = part; },
      [&] { string += c, model += c; },
      [&] { string.resize(room), model.resize(std::min<std::size_t>(model.size(), string.length())); },
      [&] { string.reserve(static_cast<unsigned>(room)); },
      [&] { string.shrink(); },
      [&] { swap(string, strings[j]), swap(model, models[j]); },
      [&] { string.clear(), model.clear(); },
      [&] { string = strings[j] + strings[i], model = models[j] + models[i]; },
    };
    edits[number(std::size(edits) - 1)]();
    if (model.size() > 3000)
      string = "", model = "";
    for (std::size_t k = 0; k != 4; ++k)
    {
      ASSERT_EQ(strings[k], models[k]);
      expectSound(strings[k]);
    }
  }
}

TEST(Tstring, isEmptyWithoutMemory)
{
  Tstring text("abc");
  text.append("x", ULONG_MAX);
  EXPECT_TRUE(text.empty());
  text.reserve(UINT_MAX);
  EXPECT_EQ(data(text), nullptr);
#if FAILING_MEMORY
  Tstring held[70]; // so that no short block is left over
  for (Tstring& each : held)
    each = "a";
  // Each step leaves its right result or an empty string. Regular expressions stay away: the system's own fail badly.
  static const Tstring source("some text, longer than the first buffer"), from("t"), to("two");
  const std::pair<void (*)(Tstring&), const char*> steps[] = {
    {[](Tstring& s) { s += "!"; }, "some text, longer than the first buffer!"},
    {[](Tstring& s) { s.substitute(from, to); }, "some twoextwo, longer twohan twohe firstwo buffer"},
    {[](Tstring& s) { s.removeSpaces(); }, "sometext,longerthanthefirstbuffer"},
    {[](Tstring& s) { Tstring::format(&s, "%s %.3f", source.asC(), 0.123456); },
     "some text, longer than the first buffer  0.123"},
    {[](Tstring& s) { s.set("\n"), s.encodeEscapeSequences(0); }, "\\n"},
  };
  const int runs = forEachFailingAllocation([&] {
    for (const auto& [change, expected] : steps)
    {
      Tstring result(source);
      change(result);
      EXPECT_TRUE(result == expected || (result.empty() && failedAllocations() != 0)) << result;
      expectSound(result);
    }
    EXPECT_LT(Tstring("a").caseCompare("b"), 0);
  });
  EXPECT_GE(runs, 10); // else malloc is not ours
#endif
}

#ifdef __GLIBC__
// Whichever thread made a short text, and however late in a thread's life one is released.
TEST(Tstring, leavesNothingOfAThreadBehind)
{
  static const auto late = [](void*) { std::vector<Tstring>(64).front() = "late"; };
  pthread_key_t key;
  ASSERT_EQ(pthread_key_create(&key, late), 0);
  std::size_t used[2] = {};
  for (std::size_t& bytes : used)
  {
    for (int i = 0; i != 500; ++i)
    {
      std::vector<Tstring> texts(64);
      for (Tstring& text : texts)
        text = "x";
      std::thread([&] {
        if (i % 2 != 0)
          texts.clear();
        pthread_setspecific(key, &key);
      }).join();
    }
    bytes = mallinfo2().uordblks;
  }
  EXPECT_LT(used[1], used[0] + 20000); // the blocks of eight threads
  pthread_key_delete(key);
}
#endif
