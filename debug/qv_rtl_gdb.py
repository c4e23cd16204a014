"""GDB views of the library's types: strings, lists, XML, log messages, record holders, settings blocks.

Load with `source qv_rtl_gdb.py`; an installed library loads it by itself. docs/debugging.md shows what they print.

A debugger meets objects before their construction and after their end. Every view therefore checks what it reads: a
wrong pointer, length or count is shown as a text in angle brackets, never thrown at the user.
"""

import datetime
import struct

import gdb
import gdb.printing
import gdb.types

MOST_UNITS = 1073741816     # of a string's block
UNLIMITED = 1 << 20         # units and bytes of one value, when GDB has no limit set
SHORT_TEXT = 40             # units of a text inside a summary
POOL_UNITS = 2048
BLOCK_ID = b"QV DEVMODEex\0"
BLOCK_EXTRA = 4180
OLDEST_BLOCK = 261


class Damaged(Exception):
    """The fault of an object. It is shown in place of the object."""


# Errors when the memory of the process is read.
FAILURES = (Damaged, gdb.error, gdb.MemoryError, RuntimeError, ValueError, OverflowError, struct.error)


def limit():
    """Most elements to show, as `set print elements` has it."""
    return gdb.parameter("print elements") or UNLIMITED


def guarded(read):
    """The result of a view's method, or the fault in angle brackets."""

    def call(self):
        try:
            return read(self)
        except FAILURES as failure:
            return "<%s>" % (str(failure) or type(failure).__name__)

    return call


def guarded_items(read):
    """The same for children: the walk ends at the first that cannot be read."""

    def call(self):
        try:
            yield from read(self)
        except FAILURES as failure:
            yield "damaged", "<%s>" % (str(failure) or type(failure).__name__)

    return call


def memory(address, size):
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except gdb.MemoryError:
        raise Damaged("cannot read %d bytes at %#x" % (size, address)) from None


def check_range(address, size):
    """Raises when one end of the memory cannot be read: a wrong count must not make GDB read gigabytes."""
    memory(address, 1)
    memory(address + size - 1, 1)


def quoted(units, cut=False):
    """UTF-16 bytes as a literal, with escapes for characters that cannot be printed."""
    text = units.decode("utf-16-le", "surrogatepass")
    shown = []
    for letter in text:
        if letter in '"\\':
            shown.append("\\" + letter)
        elif letter.isprintable():
            shown.append(letter)
        elif ord(letter) < 0x20 or ord(letter) == 0x7F:
            shown.append({"\n": "\\n", "\r": "\\r", "\t": "\\t", "\0": "\\0"}.get(letter, "\\x%02x" % ord(letter)))
        else:
            shown.append("\\u%04x" % ord(letter) if ord(letter) < 0x10000 else "\\U%08x" % ord(letter))
    return 'u"%s"%s' % ("".join(shown), "..." if cut else "")


def string_text(string, most=None):
    """The literal of a UnicodeString."""
    data = int(string["data_"])
    if data == 0:
        return 'u""'
    page, size, holders, length = struct.unpack("<HHii", memory(data - 12, 12))
    if page != 1200 or size != 2 or holders < 1 or not 0 <= length <= MOST_UNITS:
        raise Damaged("no string at %#x: code page %d, unit size %d, %d holders, length %d"
                      % (data, page, size, holders, length))
    shown = min(length, most or limit())
    return quoted(memory(data, 2 * shown), shown < length)


def short(string):
    return string_text(string, SHORT_TEXT)


def checked_count(count, most, what):
    if not 0 <= count <= most:
        raise Damaged("%d %s of %d" % (count, what, most))
    return count


class StringView:
    """UnicodeString: its text; the null string as an empty one."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        return string_text(self.value)


class ListView:
    """TStringList: its items, each with its object if it has one."""

    def __init__(self, value):
        self.value = value

    def count(self):
        count = checked_count(int(self.value["FCount"]), int(self.value["FCapacity"]), "items")
        if count > 0:
            check_range(int(self.value["FItems"]), count * self.value["FItems"].type.target().sizeof)
        return count

    @guarded
    def to_string(self):
        return "TStringList of %d" % self.count()

    @guarded_items
    def children(self):
        try:
            count = self.count()
        except Damaged:
            return      # to_string has said so
        for i in range(count):
            item = self.value["FItems"][i]
            yield "[%d]" % i, item["Text"]
            if int(item["Object"]) != 0:
                yield "[%d].Object" % i, item["Object"]


class PairView:
    """TXmlPair: an attribute."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        return "%s = %s" % (string_text(self.value["FName"]), string_text(self.value["FValue"]))


def items_of(list_pointer, wanted=None):
    """The pointers of a TXmlItems; none behind the null pointer."""
    if int(list_pointer) == 0:
        return
    items = list_pointer.dereference()
    # The sign says whether the name table is fresh.
    count = checked_count(abs(int(items["FCount"])), int(items["capacity_"]), "items")
    for i in range(count):
        item = items["FList"][i]
        yield item if wanted is None else item.cast(wanted.pointer())


def count_of(list_pointer):
    if int(list_pointer) == 0:
        return 0
    items = list_pointer.dereference()
    return checked_count(abs(int(items["FCount"])), int(items["capacity_"]), "items")


def node_line(node):
    """An element in one line: its tag and the begin of its text."""
    line = "<%s>" % short(node["FName"])[2:].replace('"', "")
    return line if int(node["FValue"]["data_"]) == 0 else "%s %s" % (line, short(node["FValue"]))


class NodeView:
    """TXmlNode: tag, text, attributes; each child in one line, as a pointer to go on with."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        return "%s, %d attributes, %d children" % (
            node_line(self.value), count_of(self.value["FAttributes"]), count_of(self.value["FChildren"]))

    @guarded_items
    def children(self):
        for pair in items_of(self.value["FAttributes"]):
            yield "@" + short(pair["FName"])[2:-1], pair["FValue"]
        for i, child in enumerate(items_of(self.value["FChildren"], gdb.types.get_basic_type(self.value.type))):
            yield "[%d] %s" % (i, self.line_of(child)), child

    @staticmethod
    def line_of(child):
        try:
            return node_line(child)
        except FAILURES as failure:
            return "<%s>" % failure


class DocumentView:
    """TXmlDoc: the encoding, how the last parse ended, prolog and root."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        return "TXmlDoc, parse result %d" % int(self.value["parse_result_"])

    @guarded_items
    def children(self):
        yield "CodePage", self.value["CodePage"]
        for member in ("FProlog", "FRoot"):
            pointer = self.value[member]
            memory(int(pointer), pointer.type.target().sizeof)
            yield member, pointer.dereference()


def time_text(file_time):
    ticks = (int(file_time["dwHighDateTime"]) << 32) + int(file_time["dwLowDateTime"])
    try:
        seconds = datetime.datetime(1601, 1, 1) + datetime.timedelta(seconds=ticks // 10000000)
    except OverflowError:
        raise Damaged("time %#x" % ticks) from None
    return "%s.%07dZ" % (seconds.strftime("%Y-%m-%dT%H:%M:%S"), ticks % 10000000)


class MessageView:
    """TLogMsg: its line in the log, and its data."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        level = int(self.value["level"])
        if not 0x20 < level < 0x7F:
            raise Damaged("no log message: level %d" % level)
        return "%s %c P%d T%d [%s,%d] %s" % (
            time_text(self.value["time"]), level, int(self.value["processId"]), int(self.value["threadId"]),
            short(self.value["source"])[2:-1], int(self.value["line"]), string_text(self.value["text"]))

    @guarded_items
    def children(self):
        size = int(self.value["dataSize"])
        if size != 0 and int(self.value["data"]) != 0:
            yield "dataLabel", self.value["dataLabel"]
            shown = min(abs(size), limit())
            yield "data", "%d bytes%s: %s%s" % (
                abs(size), " borrowed" if size < 0 else "", memory(int(self.value["data"]), shown).hex(" "),
                " ..." if shown < abs(size) else "")


class HolderView:
    """TW32StructData: its records, or the error in their place."""

    def __init__(self, value):
        self.value = value
        self.record = gdb.types.get_basic_type(value.type).template_argument(0)

    def header(self):
        data = int(self.value["FData"])
        if data == 0:
            return data, 0
        record_size, size, holders, count = struct.unpack("<IIii", memory(data - 16, 16))
        failed = count == -1 and record_size == 0 and size == 4
        if holders < 1 or not (failed or 0 <= count * record_size <= size):
            raise Damaged("no records at %#x: %d of %d bytes in %d, %d holders"
                          % (data, count, record_size, size, holders))
        return data, count

    @guarded
    def to_string(self):
        data, count = self.header()
        if count == -1:
            return "error %d" % struct.unpack("<I", memory(data, 4))
        return "%d x %s" % (count, self.record)

    @guarded_items
    def children(self):
        try:
            data, count = self.header()
        except Damaged:
            return
        records = gdb.Value(data).cast(self.record.pointer())
        for i in range(max(count, 0)):
            yield "[%d]" % i, records[i]

    @staticmethod
    def display_hint():
        return "array"


def fixed_text(array):
    """A character array of a record up to its first zero."""
    units = memory(int(array.address), array.type.sizeof)
    end = next((i for i in range(0, len(units), 2) if units[i:i + 2] == b"\0\0"), len(units))
    return quoted(units[:end])


# The public fields with a bit in dmFields. The bit says that the field is in force.
PUBLIC_FIELDS = (
    (0x1, "dmOrientation"), (0x2, "dmPaperSize"), (0x4, "dmPaperLength"), (0x8, "dmPaperWidth"), (0x10, "dmScale"),
    (0x40, "dmNup"), (0x100, "dmCopies"), (0x200, "dmDefaultSource"), (0x400, "dmPrintQuality"), (0x800, "dmColor"),
    (0x1000, "dmDuplex"), (0x2000, "dmYResolution"), (0x4000, "dmTTOption"), (0x8000, "dmCollate"))
PRIVATE_FIELDS = (
    "exDialog.Mode", "exFax.PaperSize", "exFax.Resolution", "exOut.UseDocNameAsFileName", "exOut.UseSerial",
    "exOut.RememberLastDir", "exOut.DirectoryOffset", "exOut.FileNameOffset", "exRun.Enabled", "exRun.TargetOffset",
    "exLayout", "exIPO.DitherMethod", "exIPO.Active", "exIPO.Contrast", "exIPO.Brightness")


class BlockView:
    """QV_DEVMODE: the fields that dmFields names, the private ones, the pool's texts in place of their offsets."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        block = self.value
        if (memory(int(block["exID"].address), len(BLOCK_ID)) != BLOCK_ID or int(block["dmDriverExtra"]) < BLOCK_EXTRA
                or int(block["exVersion"]) < OLDEST_BLOCK):
            raise Damaged("not a block of this driver: extra size %d, version %d"
                          % (int(block["dmDriverExtra"]), int(block["exVersion"])))
        return "QV_DEVMODE %s, version %d" % (fixed_text(block["dmDeviceName"]), int(block["exVersion"]))

    def pool_text(self, offset):
        pool = memory(int(self.value["exPool"].address), 2 * POOL_UNITS)
        if not 0 <= offset < POOL_UNITS:
            return "<offset %d is outside the pool>" % offset
        for end in range(2 * offset if offset else 0, len(pool), 2):
            if offset == 0 or pool[end:end + 2] == b"\0\0":
                return quoted(pool[2 * offset:end])
        return "<no end behind offset %d>" % offset

    @guarded_items
    def children(self):
        block = self.value
        fields = int(block["dmFields"])
        yield "dmFields", "%#x" % fields
        yield "dmFormName", fixed_text(block["dmFormName"])
        for bit, name in PUBLIC_FIELDS:
            if fields & bit:
                yield name, block[name]
        for name in PRIVATE_FIELDS:
            field = block
            for part in name.split("."):
                field = field[part]
            if name.endswith("Offset"):
                yield name[:-len("Offset")], self.pool_text(int(field))
            else:
                yield name, int(field) if field.type.strip_typedefs().code == gdb.TYPE_CODE_INT else field


class SettingsView:
    """TQVDM: the texts it keeps beside the block, and the block."""

    def __init__(self, value):
        self.value = value

    @guarded
    def to_string(self):
        return "TQVDM, its own block" if int(self.value["FOwnDM"]) == 1 else "TQVDM, a borrowed block"

    @guarded_items
    def children(self):
        for name in ("DeviceName", "FormName", "Directory", "FileName", "Target"):
            yield name, self.value[name]
        block = self.value["FDM"]
        if int(block) != 0:
            memory(int(block), block.type.target().sizeof)
            yield "FDM", block.dereference()


VIEWS = (
    ("UnicodeString", "^System::UnicodeString$", StringView),
    ("TStringList", "^Classes::TStringList$", ListView),
    ("TXmlPair", "^TXmlPair$", PairView),
    ("TXmlNode", "^TXmlNode$", NodeView),
    ("TXmlDoc", "^TXmlDoc$", DocumentView),
    ("TLogMsg", "^Mox::TLogMsg$", MessageView),
    ("TW32StructData", "^TW32StructData<.*>$", HolderView),
    ("QV_DEVMODE", "^QV_DEVMODE$", BlockView),
    ("TQVDM", "^TQVDM$", SettingsView),
)


def register():
    views = gdb.printing.RegexpCollectionPrettyPrinter("qv_rtl")
    for name, expression, view in VIEWS:
        views.add_printer(name, expression, view)
    gdb.printing.register_pretty_printer(gdb.current_objfile(), views, replace=True)


register()
