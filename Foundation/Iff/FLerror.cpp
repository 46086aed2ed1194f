// Codes and their messages, and what happens on fatal signals and at the end of the program.

#include "Foundation/Iff/FLfile.h"
#include "Foundation/Platform/Signals.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

int flerrno = 0;

namespace {

struct Message
{
  int code;
  const char* text;
};

// Ordered by code. From 100 on the codes of sibling libraries, so that they print correctly.
constexpr Message kMessages[] = {
  {0, "no error"},
  {1, "end of group or file"},
  {2, "parsing complete"},
  {3, "bad identifier"},
  {4, "IO aborted"},
  {5, "bad block"},
  {6, "corrupted file structure"},
  {7, "broken pipe"},
  {8, "file incomplete"},
  {9, "partial IO"},
  {10, "function not yet implemented"},
  {11, "not a file"},
  {12, "bad root block"},
  {13, "IO past block boundary"},
  {14, "unexpected block"},
  {15, "no end marker"},
  {16, "bad size"},
  {17, "bad pipe command"},
  {18, "bad end marker"},
  {19, "bad block end"},
  {20, "invalid function on a fifo"},
  {21, "bad file name"},
  {22, "alignment error"},
  {23, "bad compression format"},
  {24, "invalid access mode"},
  {25, "no current group"},
  {26, "no current chunk"},
  {27, "file in use"},
  {28, "unknown file size"},
  {29, "nested write"},
  {30, "nested read"},
  {31, "group header read"},
  {32, "chunk header read"},
  {33, "no memory"},
  {34, "illegal use of a reserved id"},
  {35, "marker not defined"},
  {40, "IO error"},
  {41, "host error"},
  {42, "bad function call"},
  {43, "filter command not found"},
  {44, "unknown file format"},
  {45, "bad file type"},
  {46, "unknown host"},
  {47, "internal break"},
  {48, "internal error"},
  {100, "no image in file"},
  {101, "not an image file"},
  {102, "unknown image format"},
  {103, "no image header"},
  {104, "bad image header"},
  {105, "bad image size"},
  {106, "bad number of channels"},
  {107, "bad pixel type"},
  {108, "bad tile"},
  {109, "image data incomplete"},
  {110, "image compression not supported"},
  {111, "bad image compression"},
  {112, "image converter not found"},
  {113, "no such field in image"},
  {114, "image too large"},
  {133, "no hypertext in file"},
  {134, "not an hypertext file"},
  {135, "no page defined in hypertext file"},
  {137, "link has no associated item"},
  {138, "hypertext converter not found"},
  {139, "no model in file"},
  {140, "not a model file"},
  {141, "unknown model format"},
  {142, "header already written"},
  {143, "no model header"},
  {144, "bad model header"},
  {145, "read/write after object end"},
  {146, "bad object structure"},
  {147, "model converter not found"},
  {148, "cannot convert model from pipe or memory"},
  {149, "file format not yet supported"},
  {150, "edge not linked to vertex"},
  {151, "bad polygon loop"},
  {152, "bad edge orientation"},
  {153, "attempt to link vertex to edge twice"},
  {154, "illegal edge subdivision"},
  {155, "polygon has no mormal"},
  {156, "objects have incompatible topologies"},
  {157, "objects have different number of child"},
  {158, "polygon triangulation failed"},
  {159, "incoherent break on edge or vertex"},
  {203, "not a widget description file"},
  {204, "no widget in file"},
  {205, "widget converter not found"},
  {206, "widget parent undefined"},
  {207, "font converter not found"},
  {208, "not a font file"},
  {209, "invalid device number"},
  {210, "too many popdevs"},
  {211, "unqdevice called before qdevice"},
  {256, "undefined symbol"},
  {257, "division by zero"},
  {258, "overflow"},
  {259, "underflow"},
  {260, "unbalanced parenthesis"},
  {261, "syntax error"},
  {262, "illegal assignment"},
  {263, "assignment to a constant symbol"},
  {264, "constant name expected after const specifier"},
  {265, "missing colon between expressions"},
  {266, "else not associated with if"},
  {267, "do statement without while"},
  {268, "missing parenthesis"},
  {269, "missing comma between function arguments"},
  {270, "bad number of arguments"},
  {271, "invalid operation on a constant"},
  {272, "illegal use of non-constant expression"},
  {273, "internal, unknown ucode in compiled expression"},
  {274, "missing quotes"},
  {275, "missing braket"},
  {276, "string too long"},
  {277, "unterminated string"},
};
static_assert(std::is_sorted(std::begin(kMessages), std::end(kMessages),
                             [](const Message& a, const Message& b) { return a.code < b.code; }));

// The table's own text, without asking the system: for signal handlers too.
const char* message(int code)
{
  const Message* found = std::lower_bound(std::begin(kMessages), std::end(kMessages), code,
                                          [](const Message& entry, int wanted) { return entry.code < wanted; });
  return found != std::end(kMessages) && found->code == code ? found->text : "unknown error code";
}

char gProgram[64] = "program";
volatile std::sig_atomic_t gCaught = 0;

bool noteLoudly(int signal)
{
  gCaught = signal;
  for (const char* text :
       {static_cast<const char*>(gProgram), ": ", Platform::signalName(signal), ": ", message(flerrno), "\n"})
    Platform::writeError(text);
  return false;
}

bool noteSilently(int signal)
{
  gCaught = signal;
  return Platform::isRequest(signal);
}

} // namespace

const char* FLstrerror(int code)
{
  return code == kFLioError ? std::strerror(errno) : message(code);
}

void FLperror(const char* prefix)
{
  const char* text = FLstrerror(flerrno);
  if (prefix && *prefix)
    std::fprintf(stderr, "%s : (%d) %s\n", prefix, flerrno, text);
  else
    std::fprintf(stderr, "Error %d : %s\n", flerrno, text);
}

int FLerror()
{
  return flerrno;
}

void FLcatchall()
{
  Platform::catchFatalSignals(noteLoudly);
}

void FLsilentcatch()
{
  Platform::catchFatalSignals(noteSilently);
}

int FLcaught()
{
  return gCaught;
}

const char* FLprgname(const char* name)
{
  if (name)
    std::snprintf(gProgram, sizeof gProgram, "%s", name);
  return gProgram;
}

void FLprgerror(const char* text)
{
  const char* why = FLstrerror(flerrno);
  if (text)
    std::fprintf(stderr, "%s: %s: %s\n", gProgram, text, why);
  else
    std::fprintf(stderr, "%s: %s\n", gProgram, why);
}

void FLexit(int status)
{
  FLcloseall();
  std::exit(status);
}
