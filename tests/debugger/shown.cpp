// A program that stops with one of everything. Behind `//?` stands what gdb is asked to print, and
// behind the colon what it has to answer, with * for whatever differs from run to run.
#include <veldt20/memory.h>
#include <veldt20/veldt20.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace {

struct Job {
    int number;
    void* next;
    void* prev;
};

class Numbers : public XDynArrayImp {
  public:
    Numbers() : XDynArrayImp(4, sizeof(int), 4) {}

  protected:
    void CopyConstructElement(const void*, void*) override {}
    void ConstructElements(std::int32_t, void*) override {}
    void DestructElement(void*) override {}
    void AssignElement(void*, const void*) override {}
};

[[gnu::noinline]] void Stop(const void* everything) {
    std::printf("%p\n", everything);
}

}  // namespace

int main(int, char** argv) {
    XMemInitInstance();
    struct Everything {
        char** arguments;

        //? everything.text: "a\000line"
        XCString text = XCString("a\0line", 6);
        //? everything.empty: ""
        XCString empty;
        //? everything.name: "budget"
        XStr<31> name = "budget";
        //? (XString&)everything.name: *"budget"
        //? $xpascal(everything.pascal): "five!"
        unsigned char pascal[6] = {5, 'f', 'i', 'v', 'e', '!'};
        //? $xpascal(&everything.pascal[0]): "five!"

        //? everything.point: (3, -4)
        XPoint point = XPoint(3, -4);
        //? everything.nativeRect: (2, 1) to (4, 3)
        XNRect nativeRect = {1, 2, 3, 4};
        //? everything.longRect: (2, 1) to (4, 70000)
        XLongRect longRect = XLongRect(1, 2, 70000, 4);
        //? everything.fixPoint: (1.5, -0.0000152587890625)
        XFixPoint fixPoint = XFixPoint(0x18000, -1);
        //? everything.fixRect: (0, 1) to (2, 3.25)
        XFixRect fixRect = XFixRect(0, 0x10000, 0x20000, 0x34000);
        //? $xfix(everything.half): -0.5
        std::int32_t half = -0x8000;
        //? everything.decimal: -125e-2
        XNDecimal decimal = {1, -2, {3, '1', '2', '5'}};

        //? everything.handle: handle 0x*: 300 bytes at 0x*, 2 locks, moveable
        char** handle = _XNewHandle(300);
        //? everything.fixed: handle 0x*: 200 bytes at 0x*, 1 lock, in a fixed place
        char** fixed = _XNewHandle(200);
        //? everything.large: handle 0x*: 9000 bytes at 0x*, not locked, with a region of its own
        char** large = _XNewHandle(9000);
        //? everything.disposed: (char **) 0x*
        char** disposed = _XNewHandle(10);
        //? everything.arguments: (char **) 0x*

        //? everything.pointers: 2 elements = {[0] = 0x0, [1] = 0x*}
        XSinglePtrList pointers;
        //? everything.single: 2 elements = {[0] = 0x*, [1] = 0x*}
        XIntrusiveSingleList single = XIntrusiveSingleList(offsetof(Job, next));
        //? everything.both: 0 elements
        XIntrusiveDoubleList both = XIntrusiveDoubleList(offsetof(Job, next), offsetof(Job, prev));
        //? everything.numbers: *3 elements of 4 bytes, room for 4*
        Numbers numbers;
        //? everything.records: 2 records of 3 bytes, room for 7, locked = {* = "abc", [1] = "def"}
        XHandleArray records = XHandleArray(5, 3);
        //? everything.buffer: 80 bytes at 0x*
        XAllocator buffer;
    } everything;

    everything.arguments = argv;
    XHSetState(everything.handle, 2);
    XMoveHHi(everything.fixed);
    XDisposeHandle(everything.disposed);
    everything.pointers.AddHead(&everything);
    everything.pointers.AddHead(nullptr);
    Job jobs[2] = {};
    for (Job& job : jobs) everything.single.AddHead(&job);
    everything.numbers.InsertBlockElements(0, 3);
    everything.records.Grow(2);
    std::copy_n("abcdef", 6, everything.records.Lock());
    everything.buffer.Allocate(80);
    Stop(&everything);
    return 0;
}
