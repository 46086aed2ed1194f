"""Shows the library's classes in gdb, which loads this by itself with the installed library."""

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

    def children(self):
        length = self.data["fLength"] if self.data != 0 else 0
        yield "text", chars(self.data + 1, length) if length != 0 else gdb.parse_and_eval('""')
        yield "length", length
        if self.data != 0:
            yield "shares", self.data["fCount"]


class TcharStringPrinter:
    def __init__(self, value):
        self.text = value["fText"]

    def to_string(self):
        return self.text


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


def element_type(array):
    """That of a class which derives from TarrayElements, or None."""
    if array.name and array.name.startswith("TarrayElements<"):
        return array.template_argument(0)
    for field in array.fields() if array.code == gdb.TYPE_CODE_STRUCT else []:
        if field.is_base_class:
            found = element_type(field.type.strip_typedefs())
            if found:
                return found
    return None


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


class Printers(gdb.printing.PrettyPrinter):
    named = {
        "Tstring": TstringPrinter,
        "TcharString": TcharStringPrinter,
        "Tangle": TanglePrinter,
        "Tquaternion": GeometryPrinter,
    }
    geometry = {"Tpoint3Of", "Tpoint4Of", "TvectorOf", "TtupleOf", "TmatrixOf", "TplanePointOf"}

    def __init__(self):
        super().__init__("Foundation")

    def __call__(self, value):
        kind = value.type.strip_typedefs()
        if kind.name in self.named:
            return self.named[kind.name](value)
        if kind.name and kind.name.split("<")[0] in self.geometry:
            return GeometryPrinter(value)
        element = element_type(kind)
        return TarrayPrinter(value, element) if element else None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers())
