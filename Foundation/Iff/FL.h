/// \file
/// The chunk-file engine: reads and writes files made of nested, tagged, length-prefixed chunks (the IFF family:
/// AIFF, ILBM, 8SVX, and the 4- and 8-byte aligned "FOR4" and "FOR8" forms). Usable from C.
///
/// Use it to walk or to produce such files one chunk at a time, on disk files, pipes, memory blocks, mapped files,
/// compressed and remote files. It knows the structure of a file and nothing of what a chunk means. One read chunk
/// costs three short calls and no allocation; whatever is not read is skipped. The main trap: pointers that
/// FLbgnread, FLgetchunk, FLbgnwrite and FLbgnbufchunk return are valid only until the next engine call on that file.
///
/// \code
///   _FLfile* file = FLopen("picture.iff", "r");
///   TuInt32 id, type;
///   Tint32 size;
///   if (file && FLbgnreadgroup(file, &type, &size) == 0)  // enter the root form
///   {
///     int status = 0;
///     while (status == 0 && (status = FLbgnget(file, &id, &size)) != kFLend)
///     {
///       if (status == kFLok && id == 0x424D4844)          // "BMHD"
///         FLget(file, buffer, sizeof buffer);
///       if (status == kFLok || status == kFLgroupHeader)
///         status = FLendget(file);                        // skips what was not read, and groups whole
///     }
///     FLendrgroup(file);
///   }
///   FLclose(file);
/// \endcode
///
/// A chunk on disk; all numbers are big-endian, padding bytes are zero:
///
///     offset   bytes   field
///     0        4       id: four characters, the first one first
///     4        4       size: signed, the bytes of data that follow, without the padding
///     8        size    data; in a group: a 4-byte type id, then chunks
///     8+size   0..7    padding up to the alignment in force: 2, 4 or 8 (ids that end in '4' and '8')
///
/// Ids are numbers here, the first character in the most significant byte: "FORM" is 0x464F524D.
///
/// Errors. Every failure sets flerrno to one of the kFL codes; success leaves it alone (FLclose excepted). A failing
/// call leaves the file open and its levels as they were, unless its comment says otherwise; a header that is refused
/// is not consumed. Every function takes a null file for a failure with kFLbadCall. Threads: the error code, the list
/// of open files and the settings belong to the process and take no lock, so use the engine from one thread at a time.

#pragma once

#include "Foundation/Platform/Export.h"
#include "Foundation/Platform/Types.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// One open chunk file; FLopen makes it and FLclose ends it. Its fields belong to the engine.
typedef struct _FLfile _FLfile; // NOLINT: the name is the interface's

/// The code of the last failure; 0 when there was none. Assign 0 to forget it.
extern FOUNDATION_API int flerrno;

/// What the engine itself reports, as flerrno and as status. FLstrerror knows them and those of sibling libraries.
enum
{
  kFLok = 0,
  kFLend = 1, ///< the group or the file ends here; a status of FLbgnget, not a failure
  kFLbadId = 3,
  kFLbadBlock = 5,
  kFLbrokenPipe = 7,
  kFLincomplete = 8,
  kFLnotImplemented = 10,
  kFLnotFile = 11,
  kFLbadRoot = 12,
  kFLpastBlock = 13,
  kFLunexpectedBlock = 14,
  kFLnoEndMarker = 15,
  kFLbadSize = 16,
  kFLbadPipe = 17,
  kFLbadEndMarker = 18,
  kFLbadBlockEnd = 19,
  kFLfifo = 20,
  kFLbadName = 21,
  kFLbadCompression = 23,
  kFLbadMode = 24,
  kFLnoGroup = 25,
  kFLnoChunk = 26,
  kFLinUse = 27,
  kFLunknownSize = 28,
  kFLnestedWrite = 29,
  kFLgroupHeader = 31, ///< the next chunk is a group; a status of FLbgnget, not a failure
  kFLchunkHeader = 32, ///< the next chunk is not a group; a status of FLbgnreadgroup, not a failure
  kFLnoMemory = 33,
  kFLreservedId = 34,
  kFLioError = 40, ///< the system's errno tells more; FLstrerror gives its text
  kFLhostError = 41,
  kFLbadCall = 42,
  kFLnoFilter = 43
};

/// Size fields with the top bit set are marks, not lengths.
#define FL_SIZE_UNKNOWN ((Tint32)(-0x7FFFFFFF - 1)) ///< 0x80000000: not known yet, or never patched
#define FL_SIZE_PATCHED ((Tint32)(-0x7FFFFFFF))     ///< 0x80000001: its writer will come back to fill it in
#define FL_SIZE_STREAMED ((Tint32)(-0x7FFFFFFE))    ///< 0x80000002: its writer could not come back

/// What FLidflags says of an id.
enum
{
  kFLidAlign = 0x0F,      ///< mask of the alignment: 2, 4 or 8 for group ids, 4 for marks, 0 for plain chunks
  kFLidGroup = 0x10,      ///< a 4-byte type id and chunks follow the header
  kFLidReserved = 0x20,   ///< structural
  kFLidRoot = 0x40,       ///< may stand at the root of a file
  kFLidHoldsProps = 0x80, ///< may hold property groups
  kFLidForm = 0x100,
  kFLidCat = 0x200,
  kFLidList = 0x400,
  kFLidProp = 0x800,
  kFLidIllegal = 0x1000 ///< looks like a group id but is none ("FOR2"); the engine refuses it with kFLreservedId
};

/// What the table of ids says of \p id: kFLid bits; 0 for the id of a plain chunk.
FOUNDATION_API unsigned FLidflags(TuInt32 id);

// ---------------------------------------------------------------------------------------------------------------------
// Opening and closing

/// Opens the file that \p name stands for. The first character of \p mode is 'r' to read or 'w' to write (a file is
/// created or emptied); further characters are optional:
///
///     +   raw transfers go both ways: FLread on a file that is written, FLwrite on one that is read
///     x   writing: the file must not exist yet
///     s   writing to what cannot seek: spool into a temporary file and copy that to the output in FLclose, so that
///         sizes that were unknown are exact in the output
///     l   reading: find the true sizes of "FRAM", "GRUP" and "SHAP" chunks of old files, by looking up to 4096 bytes
///         ahead for the next such id
///
/// Others are ignored. Data are never translated. The forms of a name, tried in this order:
///
///     |command, pipe:command   what the shell command writes (reading) or reads (writing)
///     stdin, stdout, stderr    the standard streams; never closed. Input is taken through the runtime's buffer, no
///                              more than needed; output begins behind what others wrote, and what they write from
///                              then on comes before what FLflush or FLclose have not handed over yet
///     mmap:path                the file mapped into memory, for reading
///     fd:number[,size]         an open descriptor, from its present offset on (position 0); never closed. FLclose
///                              leaves the offset where reading stopped; from a pipe more may have been taken
///     mem:address[,size]       a block of memory that the caller owns and keeps until FLclose; without a size
///                              nothing but its contents bounds the walk
///     [user@]host:path         a file of another machine, through the host's transfer command (see FLsettransfer),
///                              else "flrcp [-w] [user@]host:path", else the remote shell
///     path                     a local file. A ':' that is the second character or follows a '/' makes no host
///
/// Numbers are decimal, or hexadecimal after 0x. A name that ends in ".Z", other than one in memory, passes through
/// "zcat" or "compress" (see FLsetfilters; a limit on the forms does not stop that). What comes from a pipe, a fifo, a
/// character device or a filter, and what is written behind the bytes of a file that was not empty, is a fifo: it is
/// read or written strictly forwards.
///
/// Null with flerrno on failure: kFLbadMode (null or wrong arguments, or a form that cannot be opened that way),
/// kFLbadName (a form that is switched off or malformed, a host or a remote path that begins with '-'), kFLnotFile (a
/// directory), kFLbadSize (a block beyond the end of memory), kFLhostError (the host does not resolve), kFLnoFilter (no
/// such filter command), kFLnoMemory, kFLioError (the system's reason is in errno). Nothing is left open. The root
/// group is checked by the first FLbgnget, not here.
FOUNDATION_API _FLfile* FLopen(const char* name, const char* mode);

/// Opens the local file \p path, whatever characters it has: no form, no filter. Otherwise like FLopen.
FOUNDATION_API _FLfile* FLopenpath(const char* path, const char* mode);

/// The forms of a name that FLopen accepts.
enum
{
  kFLformPath = 0x01,
  kFLformPipe = 0x02,
  kFLformStream = 0x04,
  kFLformMmap = 0x08,
  kFLformFd = 0x10,
  kFLformMem = 0x20,
  kFLformHost = 0x40,
  kFLformAll = 0x7F
};

/// Sets the forms of a name that FLopen accepts from now on, in the whole process, and returns those accepted before;
/// kFLformAll at start. FLopen answers a name of another form with kFLbadName.
FOUNDATION_API unsigned FLsetnameforms(unsigned forms);

/// Switches the ".Z" filters for reading (bit 1) and for writing (bit 2), in the whole process, and returns the
/// switches as they were; 3 at start. With its filter off a name in ".Z" is opened like any other.
FOUNDATION_API unsigned FLsetfilters(unsigned switches);

/// Sets the command that transfers files of \p host: it is run with [user@]host, "read" or "write", and the path behind
/// its own words (a command that does not end in a blank has the host joined to its last word), without a shell. Null
/// takes the setting back. Both texts are copied. Returns 0, kFLbadCall (null host) or kFLnoMemory.
FOUNDATION_API int FLsettransfer(const char* host, const char* command);

/// Sets how often a pipe that reports its end before a request is filled is asked again, one second later each time;
/// returns the former number; 0 at start.
FOUNDATION_API int FLsetpiperetries(int count);

/// Ends \p file and frees it, whatever happens. On a written file first ends the open chunk and all open groups, which
/// patches their sizes; copies a spooled file to its output; closes the stream unless it is standard or borrowed;
/// waits for the filters; then removes a temporary file. 0 on success, flerrno as it was. -1 with flerrno when any
/// step failed, when an earlier write on the file failed, when a filter failed (kFLbadPipe for a command,
/// kFLbadCompression for zcat, kFLhostError for a transfer, kFLbrokenPipe when it was killed), or when a mapped file
/// shrank: 0 means that every byte is where it should be. A reader may close before the end: a filter that dies of
/// that is no failure. In a process that ignores the deaths of its children every filter counts as failed.
FOUNDATION_API int FLclose(_FLfile* file);

/// Lets FLclose remove the file. 0, or kFLnotFile when \p file was not opened by a path.
FOUNDATION_API int FLsettmp(_FLfile* file);

// ---------------------------------------------------------------------------------------------------------------------
// Reading

/// Reads the header of the next chunk of the current group, or of the file, into \p id and \p size (either may be
/// null). A size that is not known is negative, FL_SIZE_STREAMED for one. Asked again before the chunk is ended it
/// answers the same.
///
///     0                    a plain chunk: read it with FLget or FLbgnread, end it with FLendget
///     kFLgroupHeader       a group: enter it with FLbgnreadgroup, or skip it with FLendget
///     kFLend               the group or the file ends here (a header cut off by the end of file ends it too)
///     kFLbadBlock          fewer bytes than a header are left in the group
///     kFLbadSize           the size goes past the group, is below 4 in a group, or is no known mark
///     kFLbadRoot           at the root: not the id of a form, concatenation or list, or no known size mark
///     kFLunexpectedBlock   a property group outside a list
///     kFLreservedId        an id like "FOR2"
///     kFLincomplete        the file ends in front of a group's type id
///     kFLbadBlockEnd, kFLbadEndMarker   a "GEND" in the wrong place, with a size
///     kFLnotImplemented    "PATH" or "INCL"
///     kFLioError           the system failed to read, or a mapped file shrank
FOUNDATION_API int FLbgnget(_FLfile* file, TuInt32* id, Tint32* size);

/// Ends the current chunk: skips what is left of it, and its padding. 0 also when no header is pending. A group whose
/// size is unknown is walked to its end; a streamed chunk (FL_SIZE_STREAMED) ends behind the bytes "CVOE" 0x80000000.
/// Errors leave the chunk pending (a group of unknown size is left all the same): kFLioError (at most 256 bytes were
/// left and the file does not have them), kFLpastBlock (the same on a fifo), kFLnoEndMarker, and for other unknown
/// sizes kFLinUse (still being written) or, on a fifo, kFLbadSize.
FOUNDATION_API int FLendget(_FLfile* file);

/// Reads up to \p count bytes of the current chunk and returns how many it read. Fewer with kFLpastBlock: the chunk
/// has no more; 0 with kFLnoChunk: no header is pending; fewer with kFLioError: the system failed; fewer with
/// flerrno left alone: the file ends inside the chunk. A chunk of unknown size is bounded by its group.
FOUNDATION_API long FLget(_FLfile* file, void* buffer, long count);

/// Reads like FLget and returns the address of \p count bytes, without copying from a file in memory, else in the
/// transfer buffer, aligned for any type; read-only in a mapped file. Null with kFLbadSize when \p count is negative or
/// the file does not hold as much (the bytes that were there are consumed on a fifo only), with kFLpastBlock when the
/// chunk does not, with kFLnoChunk when no header is pending.
FOUNDATION_API void* FLbgnread(_FLfile* file, long count);

/// Reads the next chunk whole and ends it: the address of its data as FLbgnread gives it, its id and size. Null with
/// the status of FLbgnget in flerrno when no plain chunk is next (kFLend, kFLgroupHeader: the header is pending),
/// kFLnoGroup at the root, kFLbadSize when the size is unknown or beyond the file, else as FLendget.
FOUNDATION_API void* FLgetchunk(_FLfile* file, TuInt32* id, Tint32* size);

/// Enters the next group; \p type and \p size (either may be null) receive its type id and its size, type id
/// included. kFLchunkHeader when a plain chunk is next (its header is pending), kFLend at the end, else as FLbgnget.
FOUNDATION_API int FLbgnreadgroup(_FLfile* file, TuInt32* type, Tint32* size);

/// Leaves the current group, skipping what is left of it, and its padding; the level is left in any case. kFLnoGroup
/// at the root, else the first error met on the way. Walks, without recursion, only into groups of unknown size, which
/// take some 80 bytes of memory for each of them that is nested in another.
FOUNDATION_API int FLendrgroup(_FLfile* file);

/// Enters the next group and leaves it at once; the statuses of both.
FOUNDATION_API int FLskipgroup(_FLfile* file);

/// Reads up to \p count bytes at the present position, whatever chunk they belong to, and returns how many: fewer at
/// the end of the file, or with kFLioError. A pending chunk still ends where it did. 0 with kFLbadMode on a file that
/// is only written, with kFLfifo on one that was written and cannot go back.
FOUNDATION_API long FLread(_FLfile* file, void* buffer, long count);

/// Puts \p count bytes back in front of the present position, to be read again first. They need not be the bytes
/// that were read. Returns 0, kFLbadSize (negative count, or beyond the start of the file), kFLnoMemory, or as FLread.
FOUNDATION_API int FLunread(_FLfile* file, const void* bytes, long count);

/// Moves the position. Bytes put back hold for a step that ends among them; any other drops them. \p whence 0: to
/// \p offset from the start; 1: by \p offset; 2: to \p offset bytes before the end (a positive offset moves towards the
/// start). Errors: kFLunknownSize (whence 2 where the size is not known), kFLbadCall (another whence), kFLfifo
/// (backwards on a fifo, or at all on one that is written), kFLpastBlock (a fifo that ends before the target),
/// kFLioError (a target below 0, a step of up to 256 bytes forward that leaves the file, a failing system call).
FOUNDATION_API int FLseek(_FLfile* file, Tint64 offset, int whence);

/// The position, in bytes from the start; -1 with kFLbadCall for null.
FOUNDATION_API Tint64 FLtell(_FLfile* file);

// ---------------------------------------------------------------------------------------------------------------------
// Writing. A failed system call is remembered: FLclose then answers -1.

/// Begins a chunk. \p size is the exact number of bytes to come, or negative when unknown: it is then patched in the
/// file, or on a fifo marked FL_SIZE_STREAMED. Errors write nothing: kFLnestedWrite (a chunk is open here already),
/// kFLbadMode (not open for writing), kFLbadRoot, kFLunexpectedBlock, kFLreservedId and kFLnotImplemented as for
/// FLbgnget (kFLreservedId for "GEND" too), kFLpastBlock (no room in a group of known size), kFLioError.
FOUNDATION_API int FLbgnputchunk(_FLfile* file, TuInt32 id, Tint32 size);

/// Writes \p count bytes into the open chunk and returns \p count. 0 with kFLnoChunk, with kFLpastBlock when the
/// chunk's size or its group's does not have room for all of them, or with the error of the system.
FOUNDATION_API long FLput(_FLfile* file, const void* bytes, long count);

/// Writes \p text and its terminating zero into the open chunk; returns the bytes written, as FLput.
FOUNDATION_API long FLputs(_FLfile* file, const char* text);

/// Writes the byte \p c into the open chunk; returns 1, or 0 as FLput.
FOUNDATION_API long FLputchar(_FLfile* file, int c);

/// Ends the open chunk (on a file that is read: FLendget). Pads with zeros to the alignment, a chunk of unknown size
/// to a multiple of 4 as well; patches its size, or marks the end of a streamed chunk with "EOVC" 0x80000000. The
/// chunk is ended in any case; kFLbadSize when other than the promised number of bytes was written or a patched size
/// exceeds 0x7FFFFFFF, kFLioError.
FOUNDATION_API int FLendputchunk(_FLfile* file);

/// Begins a group of unknown size with the group id \p group ("FOR4", "LIST", …) and \p type, and enters it. kFLbadId
/// when \p group is no group id or \p type has its top bit set; else as FLbgnputchunk.
FOUNDATION_API int FLbgnwritegroup(_FLfile* file, TuInt32 group, TuInt32 type);

/// Begins a group of exactly \p size bytes: the type id, and all chunks with their padding. Use it where a reader
/// could not see that unknown sizes are padded to 4: in 2-byte aligned groups. kFLbadSize below 4; else as
/// FLbgnwritegroup.
FOUNDATION_API int FLbgnwritegroupsize(_FLfile* file, TuInt32 group, TuInt32 type, Tint32 size);

/// Leaves the group and ends it as FLendputchunk does; a streamed one gets its "GEND". kFLnestedWrite when a chunk is
/// open in it or FLbgnbufchunk's is not ended, kFLnoGroup at the root. On a file that is read: FLendrgroup.
FOUNDATION_API int FLendwritegroup(_FLfile* file);

/// Begins a chunk whose \p size bytes the caller fills in at the address returned. Null with kFLnestedWrite,
/// kFLbadSize (negative), kFLbadRoot (at the root), kFLpastBlock, kFLnoMemory, or as FLbgnputchunk. Nothing is
/// written before FLendbufchunk.
FOUNDATION_API void* FLbgnbufchunk(_FLfile* file, TuInt32 id, Tint32 size);

/// Writes the chunk begun by FLbgnbufchunk with \p actual bytes: 0 means as many as were reserved, a negative number
/// drops the chunk. kFLbadSize when it was begun smaller, kFLnoChunk when none was begun, kFLioError.
FOUNDATION_API int FLendbufchunk(_FLfile* file, Tint32 actual);

/// Writes a whole chunk of \p size bytes: the word \p type in the machine's own byte order, then size - 4 bytes of
/// \p data. kFLbadSize below 4; else as FLbgnputchunk and FLput.
FOUNDATION_API int FLputtypedchunk(_FLfile* file, TuInt32 id, Tint32 size, const void* data, TuInt32 type);

/// Writes \p count bytes at the present position, whatever chunk is open, and returns how many: fewer with
/// kFLioError, kFLbrokenPipe, or at the end of a memory block.
FOUNDATION_API long FLwrite(_FLfile* file, const void* bytes, long count);

/// A buffer of \p count + 8 bytes to be filled and written by FLendwrite; in a memory file the block itself at the
/// present position, with at least \p count bytes of it left. Null with kFLbadSize or kFLnoMemory.
FOUNDATION_API void* FLbgnwrite(_FLfile* file, long count);

/// Writes the first \p count bytes of the buffer of FLbgnwrite, 0 for the \p count it was asked for. kFLbadSize
/// beyond that number + 8, kFLbadCall without FLbgnwrite, or the error of the system.
FOUNDATION_API int FLendwrite(_FLfile* file, long count);

/// Hands what was written so far to the system. 0, or the error of the system.
FOUNDATION_API int FLflush(_FLfile* file);

// ---------------------------------------------------------------------------------------------------------------------
// Errors

/// The text of \p code; that of errno for kFLioError; "unknown error code" for what nobody defined. Never null; for
/// kFLioError valid until the next call.
FOUNDATION_API const char* FLstrerror(int code);

/// Prints "prefix : (code) text" for flerrno to standard error, or "Error code : text" without a prefix.
FOUNDATION_API void FLperror(const char* prefix);

/// flerrno.
FOUNDATION_API int FLerror(void);

/// Reports fatal signals from now on: program name, signal and the text of flerrno on standard error, before the
/// signal takes its usual course.
FOUNDATION_API void FLcatchall(void);

/// Only notes fatal signals from now on, for FLcaught. A request to stop (hang-up, interrupt, terminate) is survived;
/// a fault still ends the process.
FOUNDATION_API void FLsilentcatch(void);

/// The last signal that FLcatchall or FLsilentcatch met; 0 for none.
FOUNDATION_API int FLcaught(void);

/// Sets the program's name for messages (copied, up to 63 bytes) unless \p name is null; returns the name in force.
FOUNDATION_API const char* FLprgname(const char* name);

/// Prints "program: text: message of flerrno" to standard error; without the middle when \p text is null.
FOUNDATION_API void FLprgerror(const char* text);

/// Closes every open file, so that groups are completed and temporary files go, then exits with \p status.
FOUNDATION_API void FLexit(int status);

// ---------------------------------------------------------------------------------------------------------------------
// Names, memory, environment

/// 1 when \p name ends in "." and \p extension, else 0; case counts. Null is 0.
FOUNDATION_API int FLcheckext(const char* name, const char* extension);

/// What follows the last '.' of the last component of \p name, inside \p name; its terminating zero when there is
/// none. Null for null.
FOUNDATION_API const char* FLgetext(const char* name);

/// The last component of \p path, inside \p path: behind the last '/' (on Windows '\\' and a drive's ':' too). Null
/// for null.
FOUNDATION_API const char* FLbasename(const char* path);

/// \p size bytes, indeterminate or zero, to be released by FLfree. Null with kFLnoMemory.
FOUNDATION_API void* FLmalloc(size_t size);
FOUNDATION_API void* FLcalloc(size_t size);
FOUNDATION_API void FLfree(void* memory);

/// Notes the directories of graphics and of the project; each that is not null is copied and published as the
/// environment variable "GRAPH" or "PROJ".
FOUNDATION_API void FLsetwork(const char* graph, const char* project);

// ---------------------------------------------------------------------------------------------------------------------
// The system's services under names that are the same everywhere. Results are the system's; a failure sets kFLioError,
// a service that the platform does not have gives its failure value and kFLnotImplemented.

FOUNDATION_API int FLdup(int descriptor);
FOUNDATION_API int FLdup2(int descriptor, int target);
FOUNDATION_API int FLfcntl(int descriptor, int command, long argument);
FOUNDATION_API int FLfsync(int descriptor);
FOUNDATION_API int FListty(int descriptor);
FOUNDATION_API const char* FLttyname(int descriptor);
FOUNDATION_API int FLtcdrain(int descriptor);
FOUNDATION_API int FLtcgetpgrp(int descriptor);
FOUNDATION_API void FLsetpwent(void);
FOUNDATION_API void FLendpwent(void);
FOUNDATION_API void FLsetgrent(void);
FOUNDATION_API void FLendgrent(void);
FOUNDATION_API void FLcloselog(void);

/// Installs \p handler for \p signal, to stay installed and to let interrupted system calls go on; \p previous, unless
/// null, receives the handler before it. 0 or -1.
typedef void (*FLsignalhandler)(int signal); // NOLINT(modernize-use-using): C reads this header too
FOUNDATION_API int FLsigvec(int signal, FLsignalhandler handler, FLsignalhandler* previous);

/// sprintf: the caller answers for the room. Returns the length.
FOUNDATION_API int FLsprintf(char* buffer, const char* format, ...)
#ifdef __GNUC__
  __attribute__((format(printf, 2, 3)))
#endif
  ;

#ifdef __cplusplus
}
#endif
