// Paths (XFileSpec) and files (XFile).
#pragma once

#include <veldt20/export.h>
#include <veldt20/strings.h>

#include <cstdint>

/// The path of a file or a directory in the system's form, C:\dir\file.txt.
///
/// What it is for: holding a path, taking it apart, and asking whether something is there. It opens
/// nothing; XFile does. The text is stored as it comes, in the process's ANSI code page: nothing is
/// tested or normalised, and only the backslash separates. The copy of a path shares its text, so
/// copying takes constant time.
///
/// A query leaves its result in `out`, which may be the path itself; an empty one means that the
/// path has no such part. XFile's queries of similar names take other parts: compare them there.
///
/// Errors: std::bad_alloc from `operator new` leaves the object and `out` as they were, or `out`
/// empty. Threads: an object belongs to one thread at a time, together with the strings that share
/// its text.
class VELDT20_API XFileSpec {
  public:
    /// An empty path.
    XFileSpec();
    /// Takes the path as it comes; shares its text.
    XFileSpec(const XCString& path);
    /// Shares the text of `source`.
    XFileSpec(const XFileSpec& source);
    virtual ~XFileSpec();
    XFileSpec& operator=(const XFileSpec& source);

    /// The path itself, not a copy of it.
    XCString& GetNativeFileSpec();
    const XCString& GetNativeFileSpec() const;
    /// Takes another path as it comes; shares its text.
    void SetNativeFileSpec(const XCString& path);
    /// Puts `text` directly behind the path, without a separator. Null adds nothing.
    void Append(const char* text);

    /// 1 if a file or a directory is there, or if the wildcards * and ? in the last name match one;
    /// 0 otherwise, for whatever reason.
    int Exists() const;

    /// The whole path. With `posix` not 0 in the form /C:/dir/file.txt: a slash in front, and a
    /// slash for every backslash that isn't the second byte of a double-byte character.
    void GetPath(XCString& out, int posix) const;
    /// GetPath with `posix` 1.
    void GetPosixStylePath(XCString& out) const;

    /// What stands behind the last backslash. A backslash at the path's end belongs to the name:
    /// C:\dir\ gives dir\ and C:\ nothing. Without a backslash there is no name. Double-byte
    /// characters are respected. `unused` is not read.
    void GetName(XCString& out, int unused = 0) const;
    /// The first 255 bytes of the name.
    void GetName(XStr<255>& out, int unused = 0) const;

    /// What stands behind the first dot of the name: C:\dir\archive.tar.gz gives tar.gz. Nothing
    /// for a name that begins with a dot, and for one whose first dot is its last byte.
    void GetExtension(XCString& out) const;
    /// The same of a bare name.
    static void GetExtension(XCString& name, XCString& out);

  private:
    XCString nativeFileSpec;
};

/// A file at a path: created, opened, read and written at absolute positions.
///
///     XFileSpec path("C:\\data\\log.bin");
///     XFile file(&path);
///     if (file.Create() || file.GetError() == XFile::ErrorExists) {
///         if (file.Open(XFile::PermissionReadWrite)) {
///             file.Write("hello", 5, 0, 0);
///             file.Close();
///         }
///     }
///
/// What it is for: records at known places of a file. There is no buffer: every Read and Write is
/// one call of the operating system, so many small ones in a row want a buffer of the caller's.
///
/// Positions are 64-bit, in two halves: the low 32 bits, whose sign means nothing, and the high 32
/// bits, which must not be negative.
///
/// Errors: an operation gives 1, or 0 for a failure, or a count of bytes, and GetError says more
/// until the next operation. Nothing is thrown but std::bad_alloc where memory is needed, and that
/// leaves the object as it was. On Windows a last error of the thread that an earlier call left
/// pending counts as the operation's own.
///
/// Sharing: while a file is open, whatever the permission, opening it once more gives ErrorAccess,
/// in this process and in others, and so does deleting it. A process that ends gives up its files.
/// On other systems than Windows only users of this library keep to that.
///
/// Closing is the owner's task: the destructor does not close, and opening an open object gives its
/// former handle up, still open, until the process ends.
///
/// Threads: an object belongs to one thread at a time; different objects are independent.
class VELDT20_API XFile {
  public:
    /// What GetError tells.
    enum Error : std::int32_t {
        ErrorNone = 0,
        ErrorEndOfFile = 1,    ///< a read delivered fewer bytes than asked
        ErrorAccess = 2,       ///< refused, write-protected, or in use
        ErrorBadPath = 3,      ///< a directory on the way or the drive is missing
        ErrorNotOpen = 6,      ///< the operation needs an open file
        ErrorNotFound = 7,     ///< no such file
        ErrorExists = 8,       ///< the file or directory is there already
        ErrorIsOpen = 9,       ///< the operation needs a closed file
        ErrorReadFault = 11,   ///< the device failed to read
        ErrorWriteFault = 12,  ///< the device failed to write
        ErrorNotReady = 13,    ///< the device is not ready
        ErrorOther = 14,       ///< all else, such as a full disk
    };

    /// The last one says that others may read. Any XFile also asks to keep writers or readers out,
    /// so it changes something only for other programs on Windows.
    enum Permission : std::int32_t {
        PermissionRead = 0,
        PermissionWrite = 1,
        PermissionReadWrite = 2,
        PermissionReadWriteExclusive = 3,
        PermissionReadWriteShared = 4,
    };

    /// A closed file at the path of `path`, which is copied and must not be null.
    explicit XFile(XFileSpec* const path);
    XFile(const XFile&) = delete;
    /// Does not close.
    virtual ~XFile();
    /// Takes over path, state and handle. Both objects then hold the one handle: closing through
    /// one leaves the other marked as open, and its operations fail with ErrorOther.
    XFile& operator=(const XFile& source);
    /// 1 if the two paths are equal byte for byte; nothing else is compared.
    int operator==(const XFile& other) const;
    /// The other way round.
    int operator!=(const XFile& other) const;

    /// Makes a new, empty file and leaves it closed. Of several that create one path at the same
    /// time just one succeeds. The arguments are not read.
    ///
    /// With an empty path the file is a temporary one: the object gets a fresh path that nothing
    /// uses, in the place where the runtime library puts such files (C:\tmp where the system is not
    /// Windows), and IsTemporary gives 1 from then on. Like any other file it lasts until Delete: a
    /// destructor can't tell whether another object still counts on it.
    int Create(int unused1 = 0, int unused2 = 0);
    /// Makes one directory at the path; its parent must be there.
    int CreateDirectoryA();
    /// Opens the existing file. `unused` is not read.
    int Open(Permission permission, int unused = 0);
    /// Gives the bytes read, at most `count`. Fewer leave ErrorEndOfFile, or the error that stopped
    /// the reading.
    std::uint32_t Read(void* buffer, std::uint32_t count, std::int32_t offsetLow,
                       std::int32_t offsetHigh);
    /// Gives the bytes written, `count` unless there is an error. Beyond the end the file grows.
    std::uint32_t Write(const void* buffer, std::uint32_t count, std::int32_t offsetLow,
                        std::int32_t offsetHigh);
    /// The size in bytes. A failure leaves both targets as they were.
    int GetEOF(std::int32_t* low, std::int32_t* high);
    /// Cuts the file to the size, or lengthens it with zero bytes.
    int SetEOF(std::int32_t low, std::int32_t high);
    /// Gives the handle back to the system. On a file that isn't open, ErrorNotOpen.
    int Close();
    /// Closes the file. It keeps its name: `name` is not read.
    int Rename(const char* name);
    /// Deletes the file, which must be closed. The object keeps its path.
    int Delete();
    /// 1 if a file or a directory is at the path. Wildcards match nothing.
    int Exists() const;

    /// How the last operation went. Exists and the queries leave it as it is.
    Error GetError() const;
    /// Sets it to ErrorNone.
    void ClearError() const;
    /// 1 from an Open that succeeded to a Close that did, else 0.
    int IsOpen() const;
    /// 1 after a CreateDirectoryA that succeeded.
    int IsDirectory() const;
    /// 1 for all but directories.
    int IsFile() const;
    /// 1 after a Create without a path that succeeded.
    int IsTemporary() const;
    /// The object's own path.
    const XFileSpec* GetPlatformSpec() const;
    /// Files have no type and no creator here: these give 0 and keep nothing.
    int GetType() const;
    int GetCreator() const;
    int SetType(int type);
    int SetCreator(int creator);

    // Parts of the path. `buffer` has room for the part and a terminator; with a null buffer the
    // part comes in a block of exactly that size, which the caller gives to `operator delete`. The
    // result is null, and no block is taken, where the path has no such part. All search byte by
    // byte. Of C:\dir\file.tar.gz:

    /// The whole path: never null.
    char* GetPathname(char* buffer) const;
    /// file.tar.gz. Without a backslash the whole path; null if the path ends with one.
    char* GetName(char* buffer) const;
    /// file.tar, the name without its last dot and what follows. Null if there is no name.
    char* GetBasename(char* buffer) const;
    /// gz, behind the last dot of the whole path: C:\a.b\c gives b\c. Null if there is no dot, or
    /// nothing behind it.
    char* GetExtension(char* buffer) const;
    /// C:\dir, before the last backslash. Null if there is none.
    char* GetPath(char* buffer) const;

  private:
    const char* PathText() const;
    int TakeLastError();
    int Refuse(Error reason);
    int CreateAtPath();
    int CreateTemporary();
    /// Puts a fresh path in place of the object's. Makes no file.
    void SetupTemporaryFile();

    int openState;
    int kind;
    mutable Error error;
    XFileSpec spec;
    void* handle;  ///< of the platform; means something only while openState is 1
};
