"""Both command interfaces from Python: a printer's settings, and the answer to an XML request.

    command.py LIBRARY PRINTER REQUEST.xml RESPONSE.xml
"""
import ctypes
import sys

RESULT_LENGTH = 4096


def utf16(text):
    """Zero-terminated UTF-16, as the library's wide calls take it on every host."""
    return ctypes.create_string_buffer(text.encode("utf-16-le") + b"\0\0")


def text_command(library, *items):
    """Makes a text command call; returns (status or length, result text)."""
    result = ctypes.create_string_buffer((RESULT_LENGTH + 1) * 2)
    status = library.DoCommandW(utf16("\t".join(items)), result, RESULT_LENGTH)
    return status, result.raw.decode("utf-16-le").split("\0", 1)[0]


def main(library_file, printer, request, response):
    library = ctypes.CDLL(library_file)
    status, text = text_command(library, "getdevmode", "PrinterName", printer)
    if status < 0:
        print(f"status {status}: {text}", file=sys.stderr)
        return 1
    items = text.split("\t")
    for key, value in zip(items[0::2], items[1::2]):
        print(f"{key} = {value}")
    return 0 if library.DoXMLW(utf16(request), utf16(response)) == 1 else 1


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit("usage: command.py LIBRARY PRINTER REQUEST.xml RESPONSE.xml")
    sys.exit(main(*sys.argv[1:]))
