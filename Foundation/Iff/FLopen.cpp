// Opening by name, in all its forms, and closing.

#include "Foundation/Iff/FLfile.h"
#include "Foundation/Platform/Descriptor.h"
#include "Foundation/Platform/Process.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace {

_FLfile* gOpenFiles = nullptr;
unsigned gForms = kFLformAll;
unsigned gFilters = 3;

enum FilterSwitch : unsigned
{
  kFilterReading = 1,
  kFilterWriting = 2
};

struct Transfer
{
  char* host;
  char* command;
  Transfer* next;
};
Transfer* gTransfers = nullptr;

constexpr std::size_t kPathSize = 4096;
constexpr std::size_t kMostArguments = 64;

struct Freer
{
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Freer>;

// The first `length` characters of `text`, and `tail` behind them. Null with flerrno.
Text copyText(const char* text, std::size_t length, const char* tail = "")
{
  const std::size_t tailLength = std::strlen(tail);
  char* copy = static_cast<char*>(FLmalloc(length + tailLength + 1));
  if (copy)
  {
    std::memcpy(copy, text, length);
    std::memcpy(copy + length, tail, tailLength + 1);
  }
  return Text(copy);
}

// What follows `prefix` in `name`, or null.
const char* behind(const char* name, const char* prefix)
{
  const std::size_t length = std::strlen(prefix);
  return std::strncmp(name, prefix, length) == 0 ? name + length : nullptr;
}

// A decimal number, or a hexadecimal one after 0x; moves `text` behind it. False when there is none or it is too large.
bool parseNumber(const char*& text, TuInt64& value)
{
  const bool hexadecimal = text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  const unsigned base = hexadecimal ? 16 : 10;
  const char* at = hexadecimal ? text + 2 : text;
  const char* first = at;
  value = 0;
  for (;; ++at)
  {
    unsigned digit;
    if (*at >= '0' && *at <= '9')
      digit = unsigned(*at - '0');
    else if (hexadecimal && (*at | 0x20) >= 'a' && (*at | 0x20) <= 'f')
      digit = unsigned((*at | 0x20) - 'a') + 10;
    else
      break;
    if (value > (ULLONG_MAX - digit) / base)
      return false;
    value = value * base + digit;
  }
  text = at;
  return at != first;
}

// "number[,size]". kFLnoMark stands for no size.
bool parseNumbers(const char* text, TuInt64& number, Tint64& size)
{
  TuInt64 given = 0;
  size = kFLnoMark;
  if (!parseNumber(text, number))
    return false;
  if (*text == ',')
  {
    ++text;
    if (!parseNumber(text, given) || given > LLONG_MAX)
      return false;
    size = Tint64(given);
  }
  return *text == 0;
}

// The directories in which the engine's own helpers are looked for: made once.
const char* searchPath()
{
  static char* path = nullptr;
  if (path)
    return path;
  const char* home = std::getenv("HOME");
  const char* folders = std::getenv("FLIB");
  const char separator[] = {Platform::kPathSeparator, 0};
  const std::size_t room = 2 * (home ? std::strlen(home) + 16 : 0) + (folders ? std::strlen(folders) : 0) +
                           std::strlen(Platform::kLibraryDirectories) + 16;
  char* made = static_cast<char*>(FLmalloc(room));
  if (!made)
    return ".";
  // An explicit setting stands right behind the current directory.
  std::snprintf(made, room, ".%s%s", folders && *folders ? separator : "", folders ? folders : "");
  if (home && *home)
  {
    const std::size_t length = std::strlen(made);
    std::snprintf(made + length, room - length, "%s%s/.flib%s%s/flib", separator, home, separator, home);
  }
  const std::size_t length = std::strlen(made);
  std::snprintf(made + length, room - length, "%s%s", separator, Platform::kLibraryDirectories);
  return path = made;
}

// Looks for a command where the system's shell would.
bool findOnPath(const char* name, char (&program)[kPathSize])
{
  const char* folders = std::getenv("PATH");
  return Platform::findProgram(name, folders ? folders : "", program, sizeof program);
}

// Runs the program with its standard input (writing) or output (reading) at the end of a pipe that becomes the file's
// transport. What the file had as transport becomes the program's other end.
int runBetween(_FLfile* file, const char* const* argv, const char* shellCommand, int failure)
{
  int ends[2];
  if (!Platform::openPipe(ends))
    return FLfail(kFLioError);
  FLtransport& transport = file->fTransport;
  const int theirs = file->fReads ? ends[1] : ends[0];
  const int ours = file->fReads ? ends[0] : ends[1];
  const int input = file->fReads ? transport.fDescriptor : theirs;
  const int output = file->fReads ? theirs : transport.fDescriptor;
  const Platform::Process child =
    argv ? Platform::startProgram(argv, input, output) : Platform::startShell(shellCommand, input, output);
  const int savedError = errno;
  Platform::closeFile(theirs);
  if (child == 0)
  {
    Platform::closeFile(ours);
    errno = savedError;
    return FLfail(savedError == ENOENT ? kFLnoFilter : kFLioError);
  }
  // Behind the child that feeds or follows it, which is waited for after it.
  FLfilter& filter = file->fFilters[file->fFilters[0].fProcess ? 1 : 0];
  filter = {child, failure};
  FLcloseTransport(transport);
  transport.fDescriptor = ours;
  file->fFifo = true;
  file->fMark = kFLnoMark;
  return 0;
}

int openPath(_FLfile* file, const char* path, unsigned openFlags)
{
  file->fTransport.fDescriptor = Platform::openFile(path, openFlags);
  if (file->fTransport.fDescriptor < 0)
    return FLfail(errno == EISDIR ? kFLnotFile : kFLioError);
  file->fPath = path;
  return 0;
}

int openStream(_FLfile* file, std::FILE* stream, bool readable)
{
  if (readable != file->fReads || file->fBoth)
    return FLfail(kFLbadMode);
  FLtransport& transport = file->fTransport;
  transport.fDescriptor = Platform::descriptorOf(stream);
  transport.fBorrowed = true;
  if (file->fReads)
    transport.fStream = stream;
  else
  {
    const Platform::PipeSignalHold hold;
    if (std::fflush(stream) != 0) // what others wrote so far comes first
      return FLfail(kFLioError);
  }
  transport.fModeBefore = Platform::setBinary(transport.fDescriptor);
  // Below 0 where it cannot seek, which the examination shows.
  transport.fOrigin =
    file->fReads ? Platform::streamOffset(stream) : Platform::seekTo(transport.fDescriptor, 0, SEEK_CUR);
  return 0;
}

int openDescriptor(_FLfile* file, const char* text)
{
  TuInt64 number = 0;
  if (!parseNumbers(text, number, file->fMark) || number > INT_MAX)
    return FLfail(kFLbadName);
  // Its size is what the caller says; but whether it can seek decides how it is used.
  Platform::Examination found;
  if (!Platform::examine(int(number), found)) // no such descriptor
    return FLfail(kFLioError);
  const Tint64 offset = found.kind == Platform::Examination::file ? Platform::seekTo(int(number), 0, SEEK_CUR) : 0;
  if (offset < 0)
    return FLfail(kFLioError);
  FLtransport& transport = file->fTransport;
  transport.fDescriptor = int(number);
  transport.fBorrowed = true;
  transport.fModeBefore = Platform::setBinary(transport.fDescriptor);
  transport.fOrigin = offset;
  file->fFifo = found.kind != Platform::Examination::file || (file->fWrites && found.appends);
  return 0;
}

int openMemory(_FLfile* file, const char* text)
{
  TuInt64 address = 0;
  if (!parseNumbers(text, address, file->fMark) || address == 0 || address > UINTPTR_MAX)
    return FLfail(kFLbadName);
  const TuInt64 most = std::min<TuInt64>(UINTPTR_MAX - address, PTRDIFF_MAX);
  if (file->fMark != kFLnoMark && TuInt64(file->fMark) > most)
    return FLfail(kFLbadSize);
  file->fInMemory = true;
  file->fBlock = reinterpret_cast<unsigned char*>(std::uintptr_t(address)); // NOLINT: the name is an address
  file->fBlockSize = std::size_t(file->fMark != kFLnoMark ? TuInt64(file->fMark) : most);
  return 0;
}

int openMapped(_FLfile* file, const char* path)
{
  if (file->fWrites || file->fBoth)
    return FLfail(kFLbadMode);
  if (const int error = openPath(file, path, Platform::kOpenRead))
    return error;
  Platform::Examination found;
  if (!Platform::examine(file->fTransport.fDescriptor, found))
    return FLfail(kFLioError);
  if (found.kind != Platform::Examination::file)
    return FLfail(kFLnotFile);
  if (!file->fMapping.open(file->fTransport.fDescriptor, found.size))
    return FLfail(errno == ENOMEM ? kFLnoMemory : kFLioError);
  file->fInMemory = true;
  static unsigned char nothing = 0; // where the data of an empty file are
  file->fBlock = file->fMapping.base() ? file->fMapping.base() : &nothing;
  file->fBlockSize = file->fMapping.size();
  file->fMark = found.size;
  return 0;
}

int openShell(_FLfile* file, const char* command)
{
  return file->fBoth ? FLfail(kFLbadMode) : runBetween(file, nullptr, command, kFLbadPipe);
}

// [user@]host:path. Neither part can be taken for an option by the command that gets it.
int openRemote(_FLfile* file, const char* name, const char* colon)
{
  if (file->fBoth)
    return FLfail(kFLbadMode);
  const Text account = copyText(name, std::size_t(colon - name));
  if (!account)
    return kFLnoMemory;
  const char* at = std::strrchr(account.get(), '@');
  const char* host = at ? at + 1 : account.get();
  const char* path = colon + 1;
  const bool plain = std::all_of(account.get(), account.get() + (colon - name), [](char c) { return c > ' '; });
  if (!plain || *host == 0 || *host == '-' || *account == '-' || *path == '-' || *path == 0)
    return FLfail(kFLbadName);

  const char* argv[kMostArguments];
  std::size_t count = 0;
  const Transfer* transfer = gTransfers;
  while (transfer && std::strcmp(transfer->host, host) != 0)
    transfer = transfer->next;
  if (transfer)
  {
    const Text words = copyText(transfer->command, std::strlen(transfer->command), account.get());
    if (!words)
      return kFLnoMemory;
    for (char* word = std::strtok(words.get(), " \t"); word; word = std::strtok(nullptr, " \t"))
    {
      if (count + 3 >= kMostArguments)
        return FLfail(kFLbadCall);
      argv[count++] = word;
    }
    argv[count++] = file->fReads ? "read" : "write";
    argv[count++] = path;
    argv[count] = nullptr;
    char program[kPathSize];
    if (FLbasename(argv[0]) == argv[0])
    {
      if (!Platform::findProgram(argv[0], searchPath(), program, sizeof program) && !findOnPath(argv[0], program))
        return FLfail(kFLnoFilter);
      argv[0] = program;
    }
    return runBetween(file, argv, nullptr, kFLhostError);
  }

  if (!Platform::hostResolves(host))
    return FLfail(kFLhostError);
  char program[kPathSize];
  if (Platform::findProgram("flrcp", searchPath(), program, sizeof program))
  {
    argv[count++] = program;
    if (file->fWrites)
      argv[count++] = "-w";
    argv[count++] = name;
    argv[count] = nullptr;
    return runBetween(file, argv, nullptr, kFLhostError);
  }
  // The remote end is a shell, so the path is quoted for one: each ' becomes '\''.
  const std::size_t room = 4 * std::strlen(path) + 16;
  const Text command(static_cast<char*>(FLmalloc(room)));
  if (!command)
    return kFLnoMemory;
  char* to = command.get() + std::snprintf(command.get(), room, "cat %c '", file->fReads ? '<' : '>');
  for (const char* from = path; *from; ++from)
  {
    if (*from == '\'')
      to = std::copy_n("'\\'", 3, to);
    *to++ = *from;
  }
  to[0] = '\'';
  to[1] = 0;
  const char* const remote[] = {"/usr/bsd/rsh", account.get(), command.get(), nullptr};
  return runBetween(file, remote, nullptr, kFLhostError);
}

// Examines what was opened: its size, and whether it only goes forwards.
int examineTransport(_FLfile* file)
{
  Platform::Examination found;
  if (!Platform::examine(file->fTransport.fDescriptor, found))
    return FLfail(kFLioError);
  switch (found.kind)
  {
  case Platform::Examination::other: return FLfail(kFLnotFile);
  case Platform::Examination::stream:
    file->fFifo = true;
    file->fTransport.fOrigin = 0;
    break;
  case Platform::Examination::file:
    if (file->fTransport.fOrigin < 0)
      return FLfail(kFLioError);
    file->fMark = std::max<Tint64>(found.size - file->fTransport.fOrigin, 0);
    file->fFifo = file->fWrites && (found.size != 0 || found.appends);
    break;
  }
  return 0;
}

// Lets the file be written where it can be patched; FLclose copies it to its output.
int spool(_FLfile* file)
{
  const int descriptor = Platform::openTemporary();
  if (descriptor < 0)
    return FLfail(kFLioError);
  file->fSecond = std::exchange(file->fTransport, FLtransport{});
  file->fTransport.fDescriptor = descriptor;
  file->fFifo = false;
  file->fMark = 0;
  return 0;
}

bool endsInZ(const char* name)
{
  const std::size_t length = std::strlen(name);
  return length > 2 && std::strcmp(name + length - 2, ".Z") == 0;
}

// Gives the file, made for reading or for writing, its bytes.
int openName(_FLfile* file, const char* name, bool literal, unsigned openFlags, bool spools)
{
  struct Stream
  {
    const char* name;
    std::FILE* stream;
    bool readable;
  };
  const Stream streams[] = {{"stdin", stdin, true}, {"stdout", stdout, false}, {"stderr", stderr, false}};
  const Stream* stream =
    std::find_if(std::begin(streams), std::end(streams), [&](const Stream& s) { return !std::strcmp(s.name, name); });
  const char* command = behind(name, "|");
  if (!command)
    command = behind(name, "pipe:");
  const char* mapped = behind(name, "mmap:");
  const char* number = behind(name, "fd:");
  const char* address = behind(name, "mem:");
  // A drive letter is no host, and a path that happens to have a ':' in it is no remote one.
  const char* colon = std::strchr(name, ':');
  if (colon && (colon == name + 1 || std::memchr(name, '/', std::size_t(colon - name)) ||
                std::memchr(name, '\\', std::size_t(colon - name))))
    colon = nullptr;

  const unsigned form = literal                       ? 0U
                        : command                     ? unsigned(kFLformPipe)
                        : stream != std::end(streams) ? unsigned(kFLformStream)
                        : mapped                      ? unsigned(kFLformMmap)
                        : number                      ? unsigned(kFLformFd)
                        : address                     ? unsigned(kFLformMem)
                        : colon                       ? unsigned(kFLformHost)
                                                      : unsigned(kFLformPath);
  if (form & ~gForms || *name == 0)
    return FLfail(kFLbadName);
  const bool filtered = !literal && form != kFLformMmap && form != kFLformMem && endsInZ(name) &&
                        (gFilters & (file->fReads ? kFilterReading : kFilterWriting));
  if (filtered && file->fBoth)
    return FLfail(kFLbadMode);
  char filter[kPathSize];
  if (filtered && !findOnPath(file->fReads ? "zcat" : "compress", filter)) // before a file is emptied for nothing
    return FLfail(kFLnoFilter);

  int error = 0;
  switch (form)
  {
  case kFLformPipe: error = openShell(file, command); break;
  case kFLformStream: error = openStream(file, stream->stream, stream->readable); break;
  case kFLformMmap: error = openMapped(file, mapped); break;
  case kFLformFd: error = openDescriptor(file, number); break;
  case kFLformMem: error = openMemory(file, address); break;
  case kFLformHost: error = openRemote(file, name, colon); break;
  default: error = openPath(file, name, openFlags);
  }
  if (error == 0 && !file->fInMemory && form != kFLformFd && !file->fFifo)
    error = examineTransport(file);
  if (error == 0 && filtered)
  {
    // Text that does not get smaller is no failure.
    const char* const argv[] = {filter, file->fReads ? nullptr : "-f", nullptr};
    error = runBetween(file, argv, nullptr, file->fReads ? kFLbadCompression : kFLbadPipe);
  }
  if (error == 0 && spools && file->fWrites && file->fFifo)
    error = spool(file);
  if (error != 0 || file->fInMemory)
    return error;
  file->fWindow = static_cast<unsigned char*>(FLmalloc(kFLwindowSize));
  return file->fWindow ? 0 : int(kFLnoMemory);
}

// Waits for the filters once their pipes are closed; notes the first that failed.
void awaitFilters(_FLfile* file)
{
  const bool feedsAnother = file->fFilters[1].fProcess != 0;
  for (FLfilter& filter : file->fFilters)
  {
    if (!filter.fProcess)
      continue;
    const Platform::Ending ending = Platform::waitFor(std::exchange(filter.fProcess, 0));
    // Nobody may have read all that the filter had to give: its reader left early, or says itself why it failed.
    const bool cutOff = ending == Platform::Ending::brokenOutput ||
                        (ending == Platform::Ending::failure && !Platform::kTellsBrokenOutput);
    const bool excused = file->fReads && cutOff && (!file->fSawEnd || (feedsAnother && &filter == file->fFilters));
    if (ending == Platform::Ending::success || excused || flerrno != 0)
      continue;
    FLfail(ending == Platform::Ending::failure ? filter.fFailure : int(kFLbrokenPipe));
  }
}

// Copies a spooled file to its output.
void copySpooled(_FLfile* file)
{
  if (Platform::seekTo(file->fTransport.fDescriptor, 0, SEEK_SET) < 0)
  {
    FLfail(kFLioError);
    return;
  }
  for (;;)
  {
    const std::ptrdiff_t got = FLreceive(file, file->fWindow, kFLwindowSize);
    std::size_t count = std::size_t(std::max<std::ptrdiff_t>(got, 0));
    if (got <= 0 || !FLsend(file, file->fSecond, file->fWindow, count))
      return;
  }
}

void removeFromList(const _FLfile* file)
{
  for (_FLfile** link = &gOpenFiles; *link; link = &(*link)->fNext)
  {
    if (*link == file)
    {
      *link = file->fNext;
      return;
    }
  }
}

// Closes what is open and frees the record; notes what fails.
void release(_FLfile* file)
{
  while (file->fLevel->fParent)
    FLpop(file);
  if (file->fSecond.isOpen())
  {
    if (!file->fFailure)
      copySpooled(file);
    if (!FLcloseTransport(file->fSecond))
      FLfail(kFLioError);
  }
  FLtransport& transport = file->fTransport;
  // Whoever lent the descriptor goes on where the engine stopped, not where it had read ahead to.
  if (transport.fBorrowed && !transport.fStream && file->fReads && !file->fFifo && !file->fWriting &&
      Platform::seekTo(transport.fDescriptor, transport.fOrigin + FLposition(file), SEEK_SET) < 0)
    FLfail(kFLioError);
  if (transport.isOpen() && !FLcloseTransport(transport))
    FLfail(kFLioError);
  awaitFilters(file);
  removeFromList(file);
  while (FLcontext* spare = file->fSpare)
  {
    file->fSpare = spare->fParent;
    std::free(spare);
  }
  std::free(file->fPushed);
  std::free(file->fTransfer);
  std::free(file->fWindow);
  std::free(file->fName);
  delete file;
}

_FLfile* openFile(const char* name, const char* mode, bool literal)
{
  if (!name || !mode || (*mode != 'r' && *mode != 'w'))
    return FLfail(kFLbadMode), nullptr;
  const auto has = [mode](char c) { return std::strchr(mode + 1, c) != nullptr; };
  _FLfile* file = new (std::nothrow) _FLfile;
  if (!file)
    return FLfail(kFLnoMemory), nullptr;
  file->fNext = gOpenFiles;
  gOpenFiles = file;
  file->fReads = *mode == 'r';
  file->fWrites = !file->fReads;
  file->fBoth = has('+');
  file->fLegacy = file->fReads && has('l');
  file->fRoot.fLimit = kFLnoLimit;
  file->fRoot.fMask = 1;
  file->fName = copyText(name, std::strlen(name)).release();

  unsigned flags = file->fReads || file->fBoth ? unsigned(Platform::kOpenRead) : 0U;
  if (file->fWrites || file->fBoth)
    flags |= Platform::kOpenWrite;
  if (file->fWrites)
    flags |= Platform::kOpenCreate | (has('x') ? unsigned(Platform::kOpenExclusive) : 0U);
  const int error = file->fName ? openName(file, file->fName, literal, flags, has('s')) : int(kFLnoMemory);
  if (error != 0)
  {
    const int savedError = errno;
    release(file);
    flerrno = error;
    errno = savedError;
    return nullptr;
  }
  if (file->fReads)
  {
    file->fCur = file->fInMemory ? file->fBlock : file->fWindow;
    file->fEnd = file->fCur + (file->fInMemory ? file->fBlockSize : 0);
    file->fEndPos = file->fEnd - file->fCur;
  }
  else
    FLbeginwriting(file);
  return file;
}

} // namespace

_FLfile* FLopen(const char* name, const char* mode)
{
  return openFile(name, mode, false);
}

_FLfile* FLopenpath(const char* path, const char* mode)
{
  return openFile(path, mode, true);
}

unsigned FLsetnameforms(unsigned forms)
{
  return std::exchange(gForms, forms & unsigned(kFLformAll));
}

unsigned FLsetfilters(unsigned switches)
{
  return std::exchange(gFilters, switches & 3U);
}

int FLsettransfer(const char* host, const char* command)
{
  if (!host)
    return FLfail(kFLbadCall);
  Transfer** link = &gTransfers;
  while (*link && std::strcmp((*link)->host, host) != 0)
    link = &(*link)->next;
  if (!command)
  {
    if (Transfer* gone = *link)
    {
      *link = gone->next;
      std::free(gone->host);
      std::free(gone->command);
      delete gone;
    }
    return 0;
  }
  Text newCommand = copyText(command, std::strlen(command));
  if (!newCommand)
    return kFLnoMemory;
  if (!*link)
  {
    Text newHost = copyText(host, std::strlen(host));
    Transfer* made = newHost ? new (std::nothrow) Transfer{} : nullptr;
    if (!made)
      return FLfail(kFLnoMemory);
    made->host = newHost.release();
    *link = made;
  }
  std::free((*link)->command);
  (*link)->command = newCommand.release();
  return 0;
}

int FLsettmp(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall);
  if (!file->fPath)
    return FLfail(kFLnotFile);
  file->fTemporary = true;
  return 0;
}

int FLclose(_FLfile* file)
{
  if (!file)
    return FLfail(kFLbadCall), -1;
  const int before = std::exchange(flerrno, 0);
  int error = 0;
  if (file->fWrites)
  {
    if (file->fLevel->fFlags & kFLopen)
      error = FLendputchunk(file);
    while (error == 0 && file->fLevel->fParent)
      error = FLendwritegroup(file);
  }
  const int ending = std::exchange(flerrno, 0);
  if (file->fFailure == 0)
    FLdrain(file); // also where a chunk was not what it promised: the others are
  if (ending != 0 || file->fFailure != 0)
    flerrno = ending != 0 ? ending : file->fFailure;
  // A file may also have lost bytes that the last page of its mapping replaced by zeros.
  Platform::Examination now;
  if (file->fMapping.base() && flerrno == 0 && !FLshrank(file) &&
      (!Platform::examine(file->fTransport.fDescriptor, now) || now.size < file->fMark))
  {
    errno = EIO;
    FLfail(kFLioError);
  }
  const Text name(file->fTemporary ? std::exchange(file->fName, nullptr) : nullptr);
  const char* temporary = file->fTemporary ? file->fPath : nullptr;
  release(file);
  if (temporary && !Platform::removeFile(temporary))
    FLfail(kFLioError);
  if (flerrno != 0)
    return -1;
  flerrno = before;
  return 0;
}

void FLcloseall()
{
  while (gOpenFiles)
    FLclose(gOpenFiles);
}
