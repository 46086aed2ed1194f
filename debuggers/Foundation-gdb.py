"""Shows the library's classes in gdb, which loads this by itself with the installed library."""

import datetime

import gdb
import gdb.printing


def chars(address, length):
    """The text of length bytes at address, as gdb shows an array of char."""
    char = gdb.lookup_type("char")
    return address.cast(char.array(int(length) - 1).pointer()).dereference()


class TstringPrinter:
    """{text = "left arm", length = 8, shares = 2}; the shares are the strings that hold the text."""

    def __init__(self, value):
        self.data = value["fData"]

    def length(self):
        return self.data["fLength"] if self.data != 0 else 0

    def text(self):
        length = self.length()
        return chars(self.data + 1, length) if length != 0 else gdb.parse_and_eval('""')

    def children(self):
        yield "text", self.text()
        yield "length", self.length()
        if self.data != 0:
            yield "shares", self.data["fCount"]


class TcharStringPrinter:
    def __init__(self, value):
        self.text = value["fText"]

    def to_string(self):
        return self.text


class TiffTagPrinter:
    def __init__(self, value):
        self.value = int(value["fValue"])

    def to_string(self):
        return gdb.Value(self.value.to_bytes(4, "big"), gdb.lookup_type("char").array(3))


class TarrayPrinter:
    """length 3 of 4 = {1, 2, 3}"""

    def __init__(self, value, element):
        self.value = value
        self.element = element

    def to_string(self):
        return "length %d of %d" % (self.value["fLength"], self.value["fPhysicalSize"])

    def children(self):
        data = self.value["fData"].cast(self.element.pointer())
        for i in range(int(self.value["fLength"])):
            yield str(i), data[i]

    def display_hint(self):
        return "array"


class TablePrinter:
    """The entries of a hash table: 2 in 8 buckets = {{fPart = 5}, {fPart = 3}}"""

    def __init__(self, value, entry):
        self.value = value
        self.entry = entry

    def to_string(self):
        return "%d in %d buckets" % (self.value["fEntryCount"], self.value["fBucketCount"])

    def children(self):
        number = 0
        for bucket in range(int(self.value["fBucketCount"])):
            entry = self.value["fBuckets"][bucket]
            while entry != 0:
                yield str(number), entry.cast(self.entry.pointer()).dereference()
                number += 1
                entry = entry["fNext"]

    def display_hint(self):
        return "array"


class DictionaryPrinter:
    """The nodes of a dictionary: 2 levels = {{fPart = 3}, {fPart = 5}}"""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%d levels" % self.value["fLevel"]

    def children(self):
        number = 0
        node = self.value["fLinks"][0]
        while node != 0:
            node = node.cast(node.dynamic_type)
            yield str(number), node.dereference()
            number += 1
            node = (node + 1).cast(self.value["fLinks"].type.target().pointer()).dereference()

    def display_hint(self):
        return "array"


class EntryPrinter:
    """What an entry of a hash table, a node of a dictionary or a letter adds to its base; id and value of blind data."""

    def __init__(self, value):
        self.value = value

    def children(self):
        yield from self.added(self.value)

    @classmethod
    def added(cls, value):
        for field in value.type.strip_typedefs().fields():
            if field.is_base_class:
                yield from cls.added(value[field]) if field.name not in entries else ()
            elif hasattr(field, "bitpos") and not field.artificial and not field.name.startswith("_vptr"):
                yield field.name, value[field]


entries = "ThashTableEntry", "TdictionaryNode", "TdataLetter"


def bases(kind):
    """A class and all that it derives from, the nearer ones first."""
    yield kind
    for field in kind.fields() if kind.code == gdb.TYPE_CODE_STRUCT else []:
        if field.is_base_class:
            yield from bases(field.type.strip_typedefs())


def printer(value, kind):
    for base in bases(kind):
        name = base.name or ""
        if name.startswith("TarrayElements<"):
            return TarrayPrinter(value, base.template_argument(0))
        if name.startswith("ThashTableOf<"):
            return TablePrinter(value, base.template_argument(0))
        if name == "ThashTable":
            return TablePrinter(value, gdb.lookup_type("ThashTableEntry"))
        if name == "Tdictionary":
            return DictionaryPrinter(value)
        if name == "TdataLetter":
            return LetterPrinter(value)
        if name in entries and kind != base or name == "TblindData":
            return EntryPrinter(value)
    return None


# The classes that are shown as a line of text: what makes it of the value.


def duration_text(seconds):
    return "%dd %02d:%02d:%02d" % (seconds // 86400, seconds // 3600 % 24, seconds // 60 % 60, seconds % 60)


def moment_text(seconds):
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")


def ticks_text(ticks):
    return "%d ticks (%g s)" % (ticks, int(ticks) / 6000)


def file_text(file):
    """"notes.txt" writing, 3 bytes in the buffer, error 28"""
    state = "closed" if file["fDescriptor"] < 0 else "writing" if file["fWrites"] else "reading"
    error = ", error %d" % file["fError"] if file["fError"] != 0 else ""
    return "%s %s, %d bytes in the buffer%s" % (text(file["fName"]), state, file["fEnd"] - file["fNext"], error)


TEXTS = {
    "TanimTime": lambda value: ticks_text(value["fTicks"]),
    "Tfile": file_text,
    "Tduration": lambda value: duration_text(int(value["fSeconds"])),
    "TosTime": lambda value: "%d ms" % value["fTicks"],
    "Ttime": lambda value: moment_text(int(value["fOSTime"])),
    "TtimeUnit": lambda value: str(value["fUnit"]),
    "TtimeValue": lambda value: "%g at %s" % (value["fValue"], ticks_text(value["fTime"]["fTicks"])),
}


class TextPrinter:
    def __init__(self, value, text):
        self.value = value
        self.text = text

    def to_string(self):
        return self.text(self.value)


class GeometryPrinter:
    """<1, 2, 3>: the components as operator<< writes them, of a matrix row by row"""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        def text(value):
            kind = value.type.strip_typedefs()
            if kind.code != gdb.TYPE_CODE_ARRAY:
                return str(value)
            return "<" + ", ".join(text(value[i]) for i in range(kind.range()[1] + 1)) + ">"

        fields = [field.name for field in self.value.type.strip_typedefs().fields()]
        return text(self.value["fRows" if "fRows" in fields else "fComponents"])


class TanglePrinter:
    def __init__(self, value):
        self.radians = float(value["fRadians"])

    def to_string(self):
        return "%.15g deg" % (self.radians / 3.14159265358979323846 * 180)


# Names and tables of strings


def text(string):
    """What a Tstring holds."""
    return TstringPrinter(string).text()


class TnamePrinter:
    """{name = "arm", holders = 2}"""

    def __init__(self, value):
        self.node = value["fNode"]

    def children(self):
        if self.node != 0:
            yield "name", text(self.node["fKey"])
            yield "holders", self.node["fValue"]["fCount"]

    def to_string(self):
        return None if self.node != 0 else "no name"


class TnameDictionaryPrinter:
    """2 names = {["arm9"] = 1, ["arm10"] = 2}; the values are the holders."""

    def __init__(self, value):
        self.nodes = list(self.walk(value))

    @staticmethod
    def walk(dictionary):
        base = gdb.lookup_type("TdictionaryNode").pointer()
        kind = gdb.lookup_type("TnameDictionaryNode").pointer()
        node = dictionary["fLinks"][0]
        while node != 0:
            yield node.cast(kind).dereference()
            node = (node.cast(kind) + 1).cast(base.pointer()).dereference()  # the links follow the node

    def to_string(self):
        return "%d names" % len(self.nodes)

    def children(self):
        for i, node in enumerate(self.nodes):
            yield "key %d" % i, text(node["fKey"])
            yield "value %d" % i, node["fValue"]["fCount"]

    def display_hint(self):
        return "map"


class TstringKeyTablePrinter:
    """2 of 8 = {["lamp"] = ..., ["chair"] = ...}: entries, of so many buckets"""

    def __init__(self, value):
        self.value = value
        table = next(base for base in bases(value.type) if (base.name or "").startswith("TstringKeyTable<"))
        self.entry = gdb.lookup_type("TstringKeyEntry<%s>" % table.template_argument(0)).pointer()

    def to_string(self):
        return "%d of %d" % (self.value["fEntryCount"], self.value["fBucketCount"])

    def children(self):
        count = 0
        for bucket in range(int(self.value["fBucketCount"])):
            entry = self.value["fBuckets"][bucket]
            while entry != 0:
                own = entry.cast(self.entry).dereference()
                yield "key %d" % count, text(own["fKey"])
                yield "value %d" % count, own["fValue"]
                count += 1
                entry = entry["fNext"]

    def display_hint(self):
        return "map"


# Typed data


class TmetaclassPrinter:
    """double2 "DBL2": name and tag, if there is one"""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        tag = self.value["fTag"]
        return self.value["fName"].string() + (" %s" % tag if tag["fValue"] != 0 else "")


class LetterPrinter(EntryPrinter):
    """double2, 1 holders, 0 writers = {1, 2}: the children or elements where there are such, else what the kind adds"""

    def __init__(self, value):
        super().__init__(value.address.cast(value.dynamic_type.pointer()).dereference())
        names = [base.name or "" for base in bases(self.value.type)]
        self.array = None
        if "TdataCompound" in names:
            self.array = self.value["fChildren"]
        elif any(name.startswith("TdataArrayOf<") for name in names):
            self.array = self.value["fArray"]

    def kind(self):
        try:
            return self.value["fTypeid"]["fName"].string()
        except gdb.error:  # of a library without symbols
            return self.value.type.name

    def to_string(self):
        counts = self.value["fCounts"]
        return "%s, %d holders, %d writers" % (self.kind(), counts[0], counts[1])

    def children(self):
        return super().children() if self.array is None else printer(self.array, self.array.type).children()

    def display_hint(self):
        return None if self.array is None else "array"


class TdataPrinter:
    """1.5, 120 ticks (0.02 s), NULL, or the role and the letter: holder of double2 = {1, 2}"""

    def __init__(self, value):
        self.value = value
        self.flags = int(value["fFlags"])
        has_letter = not self.flags & 3 and value["fLetter"] != 0
        self.letter = LetterPrinter(value["fLetter"].dereference()) if has_letter else None

    def to_string(self):
        if self.letter:
            return "%s of %s" % ("holder" if self.flags & 8 else "writer", self.letter.kind())
        if self.flags & 1:
            return str(self.value["fNumber"])
        return ticks_text(self.value["fTicks"]) if self.flags & 2 else "NULL"

    def children(self):
        return self.letter.children() if self.letter else iter(())

    def display_hint(self):
        return self.letter.display_hint() if self.letter else None


class Printers(gdb.printing.PrettyPrinter):
    named = {
        "Tstring": TstringPrinter,
        "TcharString": TcharStringPrinter,
        "TiffTag": TiffTagPrinter,
        "Tname": TnamePrinter,
        "TnameString": TstringPrinter,
        "TnameDictionary": TnameDictionaryPrinter,
        "TstringHashTable": TstringKeyTablePrinter,
        "TnameTable": TstringKeyTablePrinter,
        "CMapStringToRes": TstringKeyTablePrinter,
        "CMapStringToMap": TstringKeyTablePrinter,
        "Tangle": TanglePrinter,
        "Tdata": TdataPrinter,
        "Tmetaclass": TmetaclassPrinter,
        "Tquaternion": GeometryPrinter,
    }
    geometry = {"Tpoint3Of", "Tpoint4Of", "TvectorOf", "TtupleOf", "TmatrixOf", "TplanePointOf"}

    def __init__(self):
        super().__init__("Foundation")

    def __call__(self, value):
        kind = value.type.strip_typedefs()
        if kind.name in self.named:
            return self.named[kind.name](value)
        if kind.name in TEXTS:
            return TextPrinter(value, TEXTS[kind.name])
        if kind.name and kind.name.split("<")[0] in self.geometry:
            return GeometryPrinter(value)
        return printer(value, kind)


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers())
