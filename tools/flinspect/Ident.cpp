#include "Ident.h"

#include "Console.h"

#include "Foundation/Iff/TiffTag.h"

#include <charconv>
#include <cstdio>
#include <unordered_map>

namespace {

// One character of an id at the front of `text`, which it is removed from.
unsigned char takeCharacter(std::string_view& text)
{
  if (text.front() != '\\')
  {
    const char plain = text.front();
    text.remove_prefix(1);
    return static_cast<unsigned char>(plain);
  }
  unsigned char code = 0;
  if (text.size() < 4 || text[1] != 'x' || std::from_chars(&text[2], &text[2] + 2, code, 16).ptr != &text[2] + 2)
    throw Failure(text, "'\\' must begin a \\xNN");
  text.remove_prefix(4);
  return code;
}

} // namespace

bool isPrintable(TuInt32 id)
{
  for (int shift = 24; shift >= 0; shift -= 8)
    if ((id >> shift & 0xFF) < 0x20 || (id >> shift & 0xFF) > 0x7E)
      return false;
  return true;
}

std::string idText(TuInt32 id)
{
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
  {
    const auto character = static_cast<unsigned char>(id >> shift & 0xFF);
    if (character >= 0x20 && character <= 0x7E &&
        std::string_view("\\/[]").find(char(character)) == std::string_view::npos)
    {
      text += char(character);
      continue;
    }
    char code[5];
    std::snprintf(code, sizeof code, "\\x%02X", unsigned(character));
    text += code;
  }
  return text;
}

std::string_view meaningOf(TuInt32 id)
{
  static const std::unordered_map<TiffTag, std::string_view> meanings = {
    // Structure.
    {TiffTag::kFORM, "form"},
    {TiffTag::kFOR4, "form"},
    {TiffTag::kFOR8, "form"},
    {TiffTag::kCAT, "concatenation"},
    {TiffTag::kCAT4, "concatenation"},
    {TiffTag::kCAT8, "concatenation"},
    {TiffTag::kLIST, "list"},
    {TiffTag::kLIS4, "list"},
    {TiffTag::kLIS8, "list"},
    {TiffTag::kPROP, "shared properties"},
    {TiffTag::kPRO4, "shared properties"},
    {TiffTag::kPRO8, "shared properties"},
    {TiffTag::kGEND, "end of a group"},
    {TiffTag::kEOVC, "end of a chunk"},
    {TiffTag::kPATH, "reserved"},
    {TiffTag::kINCL, "reserved"},
    // Texts.
    {TiffTag::kANNO, "annotation"},
    {TiffTag::kAUTH, "author"},
    {TiffTag::kCOMT, "comments"},
    {TiffTag::kCPRT, "rights notice"},
    {TiffTag::kDATE, "date"},
    {TiffTag::kFTXT, "formatted text"},
    {TiffTag::kNAME, "name"},
    // Sounds.
    {TiffTag::kAIFC, "sound, perhaps compressed"},
    {TiffTag::kAIFF, "sound"},
    {TiffTag::kCOMM, "format of the sound"},
    {TiffTag::kFVER, "version of the format"},
    {TiffTag::kSSND, "samples"},
    // Pictures and documents.
    {TiffTag::kBODY, "samples or pixels"},
    {TiffTag::kCMAP, "colour map"},
    {TiffTag::kFONT, "font"},
    {TiffTag::kICON, "icon"},
    {TiffTag::kPAGE, "page"},
    {TiffTag::kPATN, "pattern"},
    {TiffTag::kPREV, "preview"},
    {TiffTag::kRGBA, "red, green, blue and alpha"},
    {TiffTag::kSTYL, "style"},
    {TiffTag::kZBUF, "depth buffer"},
    // Shapes.
    {TiffTag::kCIRC, "circle"},
    {TiffTag::kCOLR, "colour"},
    {TiffTag::kCURV, "curve"},
    {TiffTag::kEDGE, "edges"},
    {TiffTag::kGRUP, "group of objects"},
    {TiffTag::kLINK, "link"},
    {TiffTag::kPOLY, "polygons"},
    {TiffTag::kRECT, "rectangle"},
    {TiffTag::kSHAP, "shape"},
    {TiffTag::kSURF, "surface"},
    {TiffTag::kVRTX, "vertices"},
  };
  const auto found = meanings.find(id);
  return found == meanings.end() ? std::string_view() : found->second;
}

ChunkPath::ChunkPath(std::string_view text)
  : fText(text)
{
  for (;;)
  {
    Step step{0, 1};
    int length = 0;
    for (; !text.empty() && text.front() != '/' && text.front() != '['; ++length)
      step.fId = step.fId << 8 | takeCharacter(text);
    if (length < 1 || length > 4)
      throw Failure(fText, "an id has one to four characters");
    for (; length < 4; ++length)
      step.fId = step.fId << 8 | ' ';
    if (!text.empty() && text.front() == '[')
    {
      const char* const end = text.data() + text.size();
      const auto [after, error] = std::from_chars(text.data() + 1, end, step.fNumber);
      if (error != std::errc() || after == end || *after != ']' || step.fNumber == 0)
        throw Failure(fText, "'[' must begin a number from 1 on, and ']' must end it");
      text.remove_prefix(static_cast<std::size_t>(after + 1 - text.data()));
    }
    fSteps.push_back(step);
    if (text.empty())
      return;
    if (text.front() != '/')
      throw Failure(fText, "'/' must separate the ids");
    text.remove_prefix(1);
  }
}

bool ChunkPath::begin(TuInt32 id, TuInt32 depth)
{
  if (fFound || fOver || depth != fMatched || id != fSteps[fMatched].fId || ++fCount != fSteps[fMatched].fNumber)
    return false;
  fCount = 0;
  fFound = ++fMatched == fSteps.size();
  return fFound;
}

void ChunkPath::end(TuInt32 depth)
{
  // The numbers make the way unique: when it is left, it was the only one.
  if (depth < fMatched)
    fOver = true;
}
