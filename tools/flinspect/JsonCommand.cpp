#include "Commands.h"
#include "Ident.h"
#include "Inspection.h"
#include "LeafValue.h"

#include <nlohmann/json.hpp>

namespace {

// A string literal of JSON, in ASCII.
std::string literal(const std::string& text)
{
  return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

// Of an id each byte is one character, U+0000 to U+00FF, so that nothing is lost.
std::string literal(TuInt32 id)
{
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
  {
    const TuInt32 byte = id >> shift & 0xFF;
    if (byte < 0x80)
      text += static_cast<char>(byte);
    else
    {
      text += static_cast<char>(0xC0 | byte >> 6);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return literal(text);
}

// Prints entries as the walk meets them.
class Json : public Inspection
{
public:
  Json(Console& console, const Source& source)
    : Inspection(console, source.name())
  {
    fConsole.put(R"({"schema":1,"file":)" + literal(fName) + R"(,"entries":[)");
  }

  bool begin(const Chunk& chunk) override
  {
    if (chunk.fIsGroup)
      putEntry(R"({"kind":"group")" + members(chunk) + "}");
    fHasValue = fValue.begin(chunk);
    return fHasValue;
  }

  void data(const unsigned char* bytes, std::size_t count) override { fValue.data(bytes, count); }

  bool end(const Chunk& chunk) override
  {
    const std::string length = R"(,"length":)" + std::to_string(chunk.fLength);
    if (chunk.fIsGroup)
      putEntry(R"({"kind":"end","depth":)" + std::to_string(chunk.fDepth) + R"(,"offset":)" +
               std::to_string(chunk.fOffset) + length + "}");
    else
    {
      const std::string value = fHasValue ? fValue.text() : std::string();
      putEntry(R"({"kind":"chunk")" + members(chunk) + length + (value.empty() ? "" : R"(,"value":)" + literal(value)) +
               "}");
    }
    fHasValue = false;
    return true;
  }

  void departure(Severity severity, Tint64 offset, const std::string& message) override
  {
    startEntry(); // and with it a line, which the message then has to itself on a terminal
    Inspection::departure(severity, offset, message);
    fConsole.put(std::string(R"({"kind":")") + (severity == Severity::kOddity ? "oddity" : "error") + R"(","offset":)" +
                 std::to_string(offset) + R"(,"message":)" + literal(message) + "}");
  }

  void finish()
  {
    fConsole.put("\n],\"oddities\":" + std::to_string(oddities()) + R"(,"errors":)" + std::to_string(errors()) +
                 R"(,"valid":)" + (errors() == 0 ? "true" : "false") + "}\n");
  }

private:
  static std::string members(const Chunk& chunk)
  {
    const auto size = static_cast<Tint64>(chunk.fSizeField);
    return R"(,"depth":)" + std::to_string(chunk.fDepth) + R"(,"id":)" + literal(chunk.fId) +
           (chunk.fIsGroup ? R"(,"type":)" + literal(chunk.fType) : "") + R"(,"offset":)" +
           std::to_string(chunk.fOffset) + R"(,"size":)" + (chunk.fHasSize ? std::to_string(size) : "null") +
           R"(,"alignment":)" + std::to_string(chunk.fMask + 1) + R"(,"padding":)" +
           (chunk.fHasSize ? std::to_string(chunk.padding(size)) : "null");
  }

  void startEntry()
  {
    fConsole.put(fHasEntries ? ",\n" : "\n");
    fHasEntries = true;
  }

  void putEntry(const std::string& entry)
  {
    startEntry();
    fConsole.put(entry);
  }

  bool fHasEntries = false;
  bool fHasValue = false; // the plain chunk that was begun may have one
  LeafValue fValue;
};

} // namespace

int showJson(Console& console, Source& source)
{
  Json json(console, source);
  Walker(source, json).walk();
  source.close();
  json.finish();
  return json.status();
}
