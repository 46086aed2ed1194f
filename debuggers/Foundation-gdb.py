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


def printers():
    result = gdb.printing.RegexpCollectionPrettyPrinter("Foundation")
    for name, printer in (("Tstring", TstringPrinter), ("TcharString", TcharStringPrinter)):
        result.add_printer(name, "^" + name + "$", printer)
    return result


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers())
