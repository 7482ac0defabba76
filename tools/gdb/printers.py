"""How gdb shows the library's types.

The file is installed beside the module under the name by which gdb loads it with the module:
NAME-gdb.py. gdb does so from folders that it was told to trust:

    add-auto-load-safe-path /the/folder/of/the/module

For a program with the static library, or from a build tree: source this file.

Strings, lists, arrays and geometry print by themselves, wherever they occur. So does a `char**` that
is a live handle of the instance, if the module has its debug information; any other stays what it
is. What has a type of the language itself is shown on request:

    print $xpascal(name)     a length-prefixed string, from its address
    print $xfix(ratio)       a 16.16 fixed-point number
"""

import gdb
import gdb.printing
import gdb.types

UNIT = 65536  # bytes of a heap page's unit of address space


def pointer_size():
    return gdb.lookup_type("char").pointer().sizeof


def chars(address, length):
    """The text of `length` bytes at `address`."""
    start = gdb.Value(int(address)).cast(gdb.lookup_type("char").pointer())
    return start.lazy_string(length=int(length))


def byte_at(address):
    return int(gdb.selected_inferior().read_memory(int(address), 1)[0][0])


def pointer_at(address):
    kind = gdb.lookup_type("void").pointer().pointer()
    return gdb.Value(int(address)).cast(kind).dereference()


def number(fixed):
    """A 16.16 number. All of its digits: 16 binary places are 16 decimal ones."""
    return ("%.16f" % (int(fixed) / 65536)).rstrip("0").rstrip(".")


class Printer:
    def __init__(self, value):
        self.value = value

    def plain(self, name):
        return int(self.value[name])


class XCString(Printer):
    def to_string(self):
        characters = self.value["characters_"]
        header = gdb.lookup_type("XCStringData").pointer()
        return chars(characters, (characters.cast(header) - 1)["length"])

    def display_hint(self):
        return "string"


class XString(Printer):
    """Its bytes are those of the XStr<N> around it."""

    def to_string(self):
        start = int(self.value.address)
        return chars(start + 1, byte_at(start))

    def display_hint(self):
        return "string"


class Pair(Printer):
    show = str

    def field(self, name):
        return self.show(self.plain(name))


class Point(Pair):
    def to_string(self):
        return "({}, {})".format(self.field("x"), self.field("y"))


class Rectangle(Pair):
    def to_string(self):
        corners = [self.field(edge) for edge in ("left", "top", "right", "bottom")]
        return "({}, {}) to ({}, {})".format(*corners)


class FixPoint(Point):
    show = staticmethod(number)


class FixRectangle(Rectangle):
    show = staticmethod(number)


class XAllocator(Printer):
    def to_string(self):
        if int(self.value["block_"]) == 0:
            return "no block"
        return "{} bytes at {:#x}".format(self.plain("size_"), int(self.value["block_"]))


class XDynArrayImp(Printer):
    def to_string(self):
        return "{} elements of {} bytes, room for {}".format(
            self.plain("count_"), self.plain("elementSize_"), self.plain("capacity_"))


class XHandleArray(Printer):
    def to_string(self):
        return "{} records of {} bytes, room for {}{}".format(
            self.plain("count_"), self.plain("elementSize_"), self.plain("capacity_"),
            ", locked" if self.plain("lockDepth_") else "")

    def children(self):
        size = self.plain("elementSize_")
        if int(self.value["handle_"]) == 0 or size < 1:
            return
        record = gdb.lookup_type("unsigned char").array(size - 1).pointer()
        first = self.value["handle_"].dereference().cast(record)
        for index in range(self.plain("count_")):
            yield "[{}]".format(index), first[index]


class List(Printer):
    """Gives no more elements than the list counts, whatever the links say."""

    def to_string(self):
        return "{} elements".format(self.plain("count_"))

    def children(self):
        at = self.value["head_"]
        for index in range(self.plain("count_")):
            if int(at) == 0:
                return
            yield "[{}]".format(index), self.element(at)
            at = self.behind(at)


class IntrusiveList(List):
    def element(self, at):
        return at

    def behind(self, at):
        return pointer_at(int(at) + self.plain("nextOffset_"))


class PointerList(List):
    """A node is the next one and the value."""

    def element(self, at):
        return pointer_at(int(at) + pointer_size())

    def behind(self, at):
        return pointer_at(at)


class Decimal(Printer):
    def to_string(self):
        digits = self.value["digits"]
        text = "".join(chr(int(digits[1 + i])) for i in range(int(digits[0])))
        sign = "-" if self.plain("sign") & 1 else ""
        return "{}{}e{}".format(sign, text, self.plain("exponent"))


class Handle:
    """A `char**` that points to a slot in use of the instance's heap."""

    PLACES = {0: "in a fixed place", 2: "moveable", 3: "with a region of its own"}

    def __init__(self, slot, page):
        self.slot = slot
        self.page = page

    def to_string(self):
        locks = int(self.slot["lockCount"])
        place = self.PLACES[int(self.page["signature"]) & 7]
        return "handle {:#x}: {} bytes at {:#x}, {}, {}".format(
            int(self.slot.address), int(self.slot["size"]), int(self.slot["block"]),
            "{} lock{}".format(locks, "" if locks == 1 else "s") if locks else "not locked", place)


def slot_of(value):
    """The slot in a slot region of the instance that `value` points to, or None."""
    pool = gdb.lookup_global_symbol("veldt::memory::InstancePool").value()
    slot_type = gdb.lookup_type("veldt::heap::HandleSlot")
    address = int(value)
    region = int(pool["slotRegions"]) if int(pool) else 0
    while region not in (0, address & -UNIT):
        region = int(pointer_at(region))
    offset = address - region - pointer_size()
    if region == 0 or offset < 0 or offset % slot_type.sizeof:
        return None
    return value.cast(slot_type.pointer()).dereference()


def handle_printer(value):
    """None for whatever can't be shown to be a handle."""
    try:
        slot = slot_of(value)
        if slot is None:
            return None
        page_type = gdb.lookup_type("veldt::heap::HeapPage").pointer()
        page = gdb.Value(int(slot["block"]) & -UNIT).cast(page_type).dereference()
        used = int(page["signature"]) & 0xFFF8 == 0xCAD0
        return Handle(slot, page) if used else None
    except (gdb.error, AttributeError):
        return None


class Printers(gdb.printing.PrettyPrinter):
    TYPES = {
        "XCString": XCString, "XString": XString, "XAllocator": XAllocator,
        "XPoint": Point, "XNPoint": Point, "XLongPoint": Point, "XFixPoint": FixPoint,
        "XRect": Rectangle, "XNRect": Rectangle, "XLongRect": Rectangle,
        "XFixRect": FixRectangle, "XDynArrayImp": XDynArrayImp, "XHandleArray": XHandleArray,
        "XSinglePtrList": PointerList, "XIntrusiveSingleList": IntrusiveList,
        "XIntrusiveDoubleList": IntrusiveList, "XNDecimal": Decimal,
    }

    def __call__(self, value):
        kind = gdb.types.get_basic_type(value.type)
        if kind.code == gdb.TYPE_CODE_PTR:
            target = kind.target().unqualified().strip_typedefs()
            is_handle = target.code == gdb.TYPE_CODE_PTR and str(target) == "char *"
            return handle_printer(value) if is_handle else None
        name = kind.tag or ""
        printer = XString if name.startswith("XStr<") else self.TYPES.get(name)
        return printer(value) if printer else None


class PascalFunction(gdb.Function):
    """$xpascal(ADDRESS): the length-prefixed string there."""

    def __init__(self):
        super().__init__("xpascal")

    def invoke(self, address):
        kind = gdb.types.get_basic_type(address.type)
        start = int(address.address if kind.code == gdb.TYPE_CODE_ARRAY else address)
        length = byte_at(start)
        if length == 0:
            return ""
        array = gdb.lookup_type("char").array(length - 1).pointer()
        return gdb.Value(start + 1).cast(array).dereference()


class FixFunction(gdb.Function):
    """$xfix(NUMBER): a 16.16 fixed-point number as a decimal one."""

    def __init__(self):
        super().__init__("xfix")

    def invoke(self, fixed):
        return int(fixed) / 65536


PascalFunction()
FixFunction()
gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers("VELDT20"), replace=True)
