/// \file
/// TiffFile: one open chunk file, as an object: reads, parses through callbacks, and writes, groups with exact sizes
/// where they cannot be patched.
///
/// Use it where the engine's functions (FL.h) need an owner, a parser or buffered groups; it costs a call more than
/// they do, and parsing nothing that grows with the nesting of the file. Reading and writing follow the engine's rules,
/// and what is said there about status, flerrno and the life of addresses holds here. The main trap: buffered writing
/// is a mode of the process that is used up by one group.
///
/// Buffered writing. With the mode on (setBufferingMode), beginWriteGroup() writes nothing: the chunks of the group are
/// kept, and endWriteGroup() writes it at once, with its exact size also to a pipe, and switches the mode off. One
/// group is kept at a time, in the whole process; other files are written directly meanwhile. Its size counts every
/// chunk padded to 4 bytes, so buffering is for groups that are aligned that way: "FOR4" and the like. No more than
/// 65536 bytes are kept: with the next one the group is written as far as it goes and goes on unbuffered, its size and
/// that of its last chunk patched or streamed. (Which are padded to 4, and in a 2-byte aligned group no reader sees
/// that: buffer none that may grow so large.) Chunks outside a buffered group are kept, too, and written one by one.
///
///     what there is    beginWriteGroup   beginPut        put             endPut             endWriteGroup
///     mode off         engine            engine          engine          engine             engine
///     mode on          > group           > chunks        engine          engine             engine
///     chunks           kFLnestedWrite    one more        to the last     writes the last    kFLnestedWrite
///                                                                        none left: > mode on
///     group            kFLnestedWrite    one more        to the last     nothing            writes it > mode off
///     failed chunks    the failure       the failure     0               the failure        the failure
///                                                                        none left: > mode off
///     failed group     the failure       the failure     0               the failure        the failure > mode off
///
/// "Engine" is the engine's function of the same meaning, ">" what there is then. Put() behind 65536 bytes leads from
/// chunks and group to "mode off", with the last chunk open in the engine. When that cannot be written, or memory runs
/// out, they have failed: nothing is open in the engine, nothing more is taken, and what was not written yet will not
/// be. Chunks and group are those of the file that began them. For another file there is "mode off" or "mode on" then,
/// of which the latter gives kFLnestedWrite to beginWriteGroup() and leaves beginPut() to the engine.
/// setBufferingMode() is for what begins next. close() ends chunks and group, quickClose() drops them.

#pragma once

#include "Foundation/Iff/FL.h"
#include "Foundation/Iff/TiffParserCallback.h"

#include <cstddef>
#include <string_view>
#include <utility>

/// An open chunk file, or none.
///
/// \code
///   TiffFile file("scene.for4", "r");
///   file.setLeafCallback([](TiffFile& from, TiffTag id, Tint32 size) { … return 0; });
///   if (!file.isActive() || file.parse() != 0)
///     file.perror("scene.for4");
///
///   TiffFile out("pipe:viewer", "w");
///   out.setBufferingMode(true);
///   out.beginWriteGroup("FOR4", "VIEW");
///   out.beginPut("NAME");
///   out.putString("left");
///   out.endPut();
///   if (out.endWriteGroup() != 0 || out.close() != 0)
///     out.perror("viewer");
/// \endcode
///
/// Without an open file everything fails with kFLbadCall. Threads: as the engine, one for all files.
class FOUNDATION_API TiffFile
{
public:
  using GroupCallback = int (*)(TiffFile& file, TiffTag group, TiffTag type);
  using LeafCallback = int (*)(TiffFile& file, TiffTag id, Tint32 size);

  TiffFile() noexcept = default;

  /// Opens as open() does; ask isActive() whether that went well.
  TiffFile(const char* name, const char* mode) { open(name, mode); }

  /// The file, and the callbacks and receiver, change places with those of \p other; a new object has none.
  TiffFile(TiffFile&& other) noexcept { *this = std::move(other); }
  TiffFile& operator=(TiffFile&& other) noexcept;

  /// Closes without telling how that went: close a written file yourself.
  ~TiffFile();

  // -------------------------------------------------------------------------------------------------------------------
  // Opening and closing

  /// Opens what \p name stands for, as FLopen. False with its flerrno, or with kFLinUse when a file is open here.
  bool open(const char* name, const char* mode);

  /// Closes what is open, then opens. False also when closing failed: nothing is opened then.
  bool reopen(const char* name, const char* mode);

  /// Takes over a file that was opened elsewhere (FLopenpath, …), after closing what is open. What close() returned for
  /// that; 0 when nothing was open.
  int initInheritance(_FLfile* file);

  bool isActive() const noexcept { return fFile; }

  /// The engine's file, which stays the property of this object; null when none is open.
  _FLfile* file() const noexcept { return fFile; }

  /// Ends what is open in the file and closes it: 0, or -1 when a step failed or no file was open. It is closed in any
  /// case.
  int close();

  /// The same without ending groups and chunks: their sizes stay as they were begun.
  int quickClose();

  /// Lets close() remove the file: FLsettmp.
  int setTmp() { return FLsettmp(fFile); }

  // -------------------------------------------------------------------------------------------------------------------
  // Raw transfers. What they write in the midst of a buffered group comes in front of it.

  long read(void* buffer, long count) { return FLread(fFile, buffer, count); }
  long write(const void* bytes, long count) { return FLwrite(fFile, bytes, count); }

  /// Put bytes in front of what is read next: FLunread.
  int unread(const void* bytes, long count) { return FLunread(fFile, bytes, count); }
  int unget(const void* bytes, long count) { return FLunread(fFile, bytes, count); }
  int insertBytes(const void* bytes, long count) { return FLunread(fFile, bytes, count); }

  int seek(Tint64 offset, int whence = 0) { return FLseek(fFile, offset, whence); }
  Tint64 tell() const { return FLtell(fFile); }
  int flush() { return FLflush(fFile); }

  /// A buffer to fill, and the end of that: FLbgnwrite, FLendwrite.
  void* beginWrite(long count) { return FLbgnwrite(fFile, count); }
  int endWrite(long count = 0) { return FLendwrite(fFile, count); }

  // -------------------------------------------------------------------------------------------------------------------
  // Reading chunks

  /// The header of the next chunk, and the end of the chunk: FLbgnget, FLendget. \p size may be null; one that is not
  /// known is negative.
  int beginGet(TiffTag& id, Tint32* size);
  int endGet() { return FLendget(fFile); }

  /// Bytes of the chunk: FLget.
  long get(void* buffer, long count) { return FLget(fFile, buffer, count); }

  /// The address of the next \p count bytes of the chunk, without copying where the file is in memory: FLbgnread.
  void* beginRead(long count) { return FLbgnread(fFile, count); }
  void* sharedGet(long count) { return FLbgnread(fFile, count); }

  /// Reads a text up to and including its zero byte, or to the end of the chunk, and puts its first \p length - 1
  /// characters and a zero into \p buffer. Returns how many bytes it took: more than \p length when the text was cut;
  /// 0 with the flerrno of FLget when there was none, or kFLbadSize for a length below 1. Without a zero byte before
  /// the end of the chunk flerrno is kFLpastBlock.
  long getString(char* buffer, long length);

  /// Reads the next chunk whole and ends it: FLgetchunk. \p size may be null.
  void* getChunk(TiffTag& id, Tint32* size);

  /// The same for the chunk whose header was read, by beginGet() or for a leaf event; kFLnoChunk without one.
  void* readChunk(Tint32* size);

  /// The same for chunks that begin with a type: the address behind that, and the size without it. Null with kFLbadSize
  /// when there is no room for a type; the chunk is ended then. Both pointers may be null. A word of type is in the
  /// byte order of the machine that wrote it, and the data behind it are aligned for 4 bytes.
  void* getTypedChunk(TiffTag& id, Tint32* size, TuInt32* type);
  void* readTypedChunk(Tint32* size, TuInt32* type);

  /// Groups: FLbgnreadgroup, FLendrgroup, FLskipgroup. \p size may be null.
  int beginReadGroup(TiffTag& type, Tint32* size = nullptr);
  int endReadGroup() { return FLendrgroup(fFile); }
  int skipGroup() { return FLskipgroup(fFile); }

  // -------------------------------------------------------------------------------------------------------------------
  // Parsing

  /// Who gets the events of parse(); the caller keeps the receiver. A receiver takes the place of the three functions,
  /// among which null ignores its events. Capture-less lambdas are functions, too.
  void setCallbackObject(TiffParserCallback* receiver) noexcept { fReceiver = receiver; }
  void setFormCallback(GroupCallback callback) noexcept { fFormCallback = callback; }
  void setListCallback(GroupCallback callback) noexcept { fListCallback = callback; }
  void setLeafCallback(LeafCallback callback) noexcept { fLeafCallback = callback; }

  /// Walks what is left of the current group, or of the file, with all groups in it: a form event for a form or
  /// property group, a list event for a list or concatenation, then the events of its members, then a leaf event "GEND"
  /// of size 0; a leaf event for a plain chunk, of negative size where that is not known. The current group itself, and
  /// the file, end in a "GEND" as well.
  ///
  /// An event is answered with 0 to go on: into the group, or behind the chunk. Any other answer stops the walk at once
  /// and is returned. Two have a meaning: 47 stops without an error. 1 ends the level that the chunk or group stands
  /// in, without a "GEND"; the walk goes on behind the group around it. The answer to a "GEND" does not count.
  ///
  /// In a leaf event the header has been read: read the data, or leave it to be skipped. In a group's event the group
  /// has been entered; where the walk stops, it and the groups around it are still entered. A callback may read on,
  /// enter groups and leave them, parse the group itself (answering 0 then announces its end once more), change
  /// receiver, callbacks and set; it must leave the file where it does, in the same group. What it throws passes
  /// through and leaves the file like a stop.
  ///
  /// Returns 0, the answer that stopped the walk, or the engine's code; flerrno is set to either but 47. A file that
  /// ends in the header of a group at the root ends well, without a "GEND". Nesting costs no stack.
  int parse();

  /// The same, but the end of the level is 1.
  int endParse() { return parseKernel(); }

  // -------------------------------------------------------------------------------------------------------------------
  // Writing

  /// Switches buffered writing on or off, in the whole process; see the top. It is off at start, and after every
  /// buffered group.
  static void setBufferingMode(bool on) noexcept { fsNeedToBufferData = on; }
  static bool bufferingMode() noexcept { return fsNeedToBufferData; }

  /// Gives back the memory that buffering keeps for the next time, at least 1 KB for each chunk of the largest group so
  /// far. Nothing happens while a group or a chunk is buffered.
  static void freeBuffers() noexcept;

  /// Begins a group: FLbgnwritegroup. Buffered, it fails as that does, at once, and ending it is not due then.
  int beginWriteGroup(TiffTag group, TiffTag type);

  /// Ends the group: FLendwritegroup. A buffered group is written, and is ended in any case. Nothing of it is written
  /// with kFLpastBlock (an enclosing group has no room for it), with kFLbadSize (the alignment in force is not 4, and
  /// pads one of its chunks otherwise), and after a put for which there was no memory, whose failure is returned.
  int endWriteGroup();

  /// Begins a chunk of exactly \p size bytes, or of as many as will come if negative: FLbgnputchunk. Buffered, the size
  /// does not count.
  int beginPut(TiffTag id, Tint32 size = -1);

  /// Writes bytes into the chunk and returns \p count, or 0: FLput. Buffered, 0 with kFLnoChunk in a group without
  /// chunks, with kFLnoMemory, or when the data exceeded 65536 bytes and writing them failed.
  long put(const void* data, long count);

  /// The same for a text and a zero behind it; returns how many bytes it wrote: both, or none. The forms with a length
  /// write the zero by itself: where there is no room for it, the characters only.
  long putString(const char* text);
  long putString(const char* text, long count);
  long putString(std::string_view text) { return putString(text.data(), long(text.size())); }

  /// Ends the chunk: FLendputchunk. In a buffered group it does nothing.
  int endPut();

  /// Writes a whole chunk. The typed one has 4 bytes more: first the word of type, in the machine's own byte order.
  /// kFLbadSize when \p size is negative or that is too large. Both go into a buffered group like others.
  int putChunk(TiffTag id, Tint32 size, const void* data) { return putWhole(id, nullptr, size, data); }
  int putTypedChunk(TiffTag id, Tint32 size, const void* data, TuInt32 type) { return putWhole(id, &type, size, data); }

  /// A chunk whose \p size bytes are filled in place: FLbgnbufchunk, FLendbufchunk. Not in a buffered group:
  /// kFLnestedWrite.
  void* beginWriteBufferedChunk(TiffTag id, Tint32 size);
  int endWriteBufferedChunk(Tint32 actual = 0) { return FLendbufchunk(fFile, actual); }

  // -------------------------------------------------------------------------------------------------------------------
  // Errors and the rest

  /// flerrno, and its message on standard error: FLperror.
  int error() const { return FLerror(); }
  void perror(const char* prefix = nullptr) const { FLperror(prefix); }

  /// Whether the file, or any of the engine's, is open on a terminal.
  bool isTty() const { return isTtyFile(fFile); }
  static bool isTtyFile(const _FLfile* file);

  /// The block of a file in memory, mapped or not; false for others.
  bool memoryInfo(void*& address, std::size_t& size) const;

  /// The bytes of a word, or of its lower half, in the opposite order.
  static constexpr TuInt32 swapWord(TuInt32 word) noexcept
  {
    return word << 24 | (word & 0xFF00U) << 8 | (word >> 8 & 0xFF00U) | word >> 24;
  }
  static constexpr TuInt16 swapHalf(TuInt32 half) noexcept
  {
    return TuInt16((half & 0xFFU) << 8 | (half >> 8 & 0xFFU));
  }

private:
  int parseKernel();
  int leafEvent(TiffTag id, Tint32 size);
  int groupEvent(TiffTag group, TiffTag type);

  bool isBuffering() const;
  int putWhole(TiffTag id, const TuInt32* type, Tint32 size, const void* data);
  long copyToBuffer(const void* data, long count);
  int flushBuffer(long index, bool leaveOpen);
  int flushBuffers(bool overflows);
  static int failBuffering(int error);

  static bool fsNeedToBufferData;

  _FLfile* fFile = nullptr;
  GroupCallback fFormCallback = nullptr;
  GroupCallback fListCallback = nullptr;
  LeafCallback fLeafCallback = nullptr;
  TiffParserCallback* fReceiver = nullptr;
};

static_assert(sizeof(TiffFile) == 5 * sizeof(void*), "the file, three functions and the receiver");
