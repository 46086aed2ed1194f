/// \file
/// Tstring beside std::string, whose short texts need no buffer, and QByteArray, which shares with an atomic count.

#include "benchmarks/Ratios.h"

#include "Foundation/Container/StringArrays.h"
#include "Foundation/String/Tstring.h"

#include <QByteArray>
#include <QHash>

namespace {

const char kText[] =
  "a text of a hundred characters, such as a path, a message or a list of names, and its end, too: 100";

// What was done to the object cannot be left out, nor what it holds be known.
template <class Object>
void keep(Object& object)
{
  asm volatile("" : : "r"(&object) : "memory"); // NOLINT(hicpp-no-assembler)
}

// Seconds that \p count runs of \p work take.
template <class Work>
std::function<double()> timed(int count, Work work)
{
  return [=] {
    return seconds([&] {
      for (int i = 0; i != count; ++i)
        work();
    });
  };
}

template <class String>
String made(int length)
{
  return String(kText, static_cast<unsigned>(length));
}

void add(std::string& text, char c)
{
  text += c;
}
void add(Tstring& text, char c)
{
  text += c;
}
void add(QByteArray& text, char c)
{
  text.append(c);
}

// The least that a write does.
template <class String>
void write(String& text)
{
  if constexpr (std::is_same_v<String, Tstring>)
    text.reserve(1);
  else
    *text.data() = 'A';
}

std::size_t find(const std::string& text, const std::string& part)
{
  return text.find(part);
}
std::size_t find(const Tstring& text, const Tstring& part)
{
  return std::size_t(text.findstr(part));
}
std::size_t find(const QByteArray& text, const QByteArray& part)
{
  return std::size_t(text.indexOf(part));
}

std::size_t pieces(const std::string& text)
{
  std::vector<std::string> result;
  for (std::size_t first = 0, end; first < text.size(); first = end + 1)
  {
    end = std::min(text.find(',', first), text.size());
    if (end != first)
      result.push_back(text.substr(first, end - first));
  }
  return result.size();
}
std::size_t pieces(const Tstring& text)
{
  TstringArray result(16);
  text.split(',', result);
  return result.length();
}
std::size_t pieces(const QByteArray& text)
{
  return std::size_t(text.split(',').size());
}

std::size_t hashOf(const std::string& text)
{
  return std::hash<std::string>()(text);
}
std::size_t hashOf(const Tstring& text)
{
  return text.hash();
}
std::size_t hashOf(const QByteArray& text)
{
  return qHash(text);
}

template <class String>
void addCases(std::vector<Case>& cases, const char* name)
{
  const bool ours = std::is_same_v<String, Tstring>;
  const auto row = [&](const char* table, std::function<double()> run) {
    cases.push_back({table, name, ours, 5, std::move(run)});
  };
  for (const int length : {10, 100})
  {
    const std::string suffix = " " + std::to_string(length);
    const String text = made<String>(length), same = made<String>(length);
    const auto rowOf = [&](const char* table, std::function<double()> run) {
      row((table + suffix).c_str(), std::move(run));
    };
    rowOf("create", timed(100000, [=] {
            String made = ::made<String>(length);
            keep(made);
          }));
    rowOf("copy", timed(100000, [=] {
            String copy(text);
            keep(copy);
          }));
    rowOf("copy, write", timed(100000, [=] {
            String copy(text);
            write(copy);
            keep(copy);
          }));
    rowOf("concatenate", timed(100000, [=] {
            String sum = text + same;
            keep(sum);
          }));
    rowOf("equal", timed(100000, [=] {
            bool equal = text == same;
            keep(equal);
          }));
    rowOf("equal copies", timed(100000, [=, copy = String(text)] {
            bool equal = text == copy;
            keep(equal);
          }));
    rowOf("hash", timed(100000, [=] {
            std::size_t hash = hashOf(text);
            keep(hash);
          }));
    rowOf("append by bytes", timed(1000, [=] {
            String grown;
            for (int i = 0; i != length; ++i)
              add(grown, 'c');
            keep(grown);
          }));
  }
  row("append by bytes 100000", timed(1, [=] {
        String grown;
        for (int i = 0; i != 100000; ++i)
          add(grown, 'c');
        keep(grown);
      }));
  std::string list;
  for (int i = 0; i != 1000; ++i)
    list += "name" + std::to_string(i) + ",";
  row("split into 1000", timed(10, [=, text = String(list.c_str())] {
        std::size_t count = pieces(text);
        keep(count);
      }));
  const String text((std::string(100000, 'a') + "a needle").c_str()), needle("a needle");
  row("find at 100000", timed(10, [=] {
        std::size_t found = find(text, needle);
        keep(found);
      }));
}

} // namespace

int main(int argc, char** argv)
{
  std::vector<Case> cases;
  addCases<Tstring>(cases, "Tstring");
  addCases<std::string>(cases, "std::string");
  addCases<QByteArray>(cases, "QByteArray");
  const std::vector<Aim> aims = {
    {"copy 100", "Tstring", "std::string", 0.2},
    {"copy 10", "Tstring", "std::string", 1},
    {"append by bytes 10", "Tstring", "std::string", 2},
    {"append by bytes 100", "Tstring", "std::string", 1},
    {"append by bytes 100000", "Tstring", "std::string", 1},
    {"concatenate 10", "Tstring", "std::string", 2},
    {"concatenate 100", "Tstring", "std::string", 1},
    {"create 10", "Tstring", "std::string", 2},
    {"copy, write 10", "Tstring", "std::string", 2},
    {"split into 1000", "Tstring", "std::string", 2},
    {"find at 100000", "Tstring", "std::string", 0.2},
  };
  return runRatios(argc, argv, cases, aims);
}
