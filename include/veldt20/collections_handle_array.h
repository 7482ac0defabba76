// An array of plain records in one handle.
#pragma once

#include <veldt20/export.h>

#include <cstdint>

/// An array of records of one size, as raw bytes in a relocatable handle: no element operations and
/// no virtual calls. A change of size, and any allocation while the array isn't locked, may move
/// the records, so take GetArrayPtr again after each, or Lock for as long as nothing is added.
///
///     XHandleArray points(16, sizeof(XNPoint));
///     if (points.IHandleArray() && points.Grow(1)) {
///         auto* last = reinterpret_cast<XNPoint*>(points.GetArrayPtr()) + points.GetNumElements()
///         - 1; *last = {3, 4};
///     }
///
/// The room follows the number of records with a slack: it grows to the need and the slack, and
/// shrinks to the same once more than the slack lies idle. Every `int` result is 1, or 0 when
/// memory ran out (kMemFull in XMemError), and then the array is as it was. Bytes of new records
/// are undefined. Indexes and counts are in records, and aren't checked.
class VELDT20_API XHandleArray {
  public:
    /// An empty array of records of `elementSize` bytes. Ask IHandleArray whether it worked.
    XHandleArray(int slack, int elementSize);
    /// Disposes the handle, locked or not.
    ~XHandleArray();
    XHandleArray(const XHandleArray&) = delete;
    XHandleArray& operator=(const XHandleArray&) = delete;

    /// 1 if the array has its handle; if not, nothing else may be called.
    int IHandleArray();
    /// The handle, which stays the array's.
    char** GetArrayHandle() const;
    /// The first record, for the moment.
    char* GetArrayPtr() const;
    /// How many records there are, without the slack.
    std::int32_t GetNumElements() const;

    /// With `delta` above 0, opens a gap of that many records at `index`; below 0, removes as many
    /// just before `index`. 0 does nothing.
    int Shift(std::int32_t index, std::int32_t delta);
    /// Adds `count` records at the end, or removes them if it is negative.
    int Grow(std::int32_t count);
    /// Makes room for `count` more records, which can then be added without failing.
    int Preflight(std::int32_t count);
    /// Removes every record.
    void DeleteAll();

    /// Holds the records where they are against other allocations, though not against a change of
    /// this array's size, and gives the first. Pair each with an Unlock; pairs may nest.
    char* Lock() const;
    /// Takes back one Lock.
    void Unlock() const;

  private:
    int ReAlloc(std::int32_t capacity);
    void Move(std::int32_t from, std::int32_t to, std::int32_t count);
    int GrowTable(std::uint32_t needed);
    void ShrinkTable(std::int32_t needed);

    std::int32_t slack_;
    std::int32_t elementSize_;
    mutable std::int32_t lockDepth_;
    std::int32_t count_;
    std::int32_t capacity_;  ///< records that there is room for
    char** handle_;
};
