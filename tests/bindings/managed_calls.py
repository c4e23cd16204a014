"""The scenario of managed_calls.cpp through the Python module: managed_calls.py LIBRARY PRINTER"""
import os
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
sys.path.insert(0, os.path.join(ROOT, "bindings", "python"))

from qv_rtl import CommandError, QvRtl, QvRtlError, RequestError  # noqa: E402

FANCY = "\U0001F4E0 \u0100 \u00e9"
COPIES = {"dmCopies": 3, "exOut.UseSerial": False}


def units(text):
    return len(text.encode("utf-16-le")) // 2


def show_status(qv, printer):
    try:
        qv.settings(printer)
    except CommandError as failure:
        print(failure.status, units(failure.text))


def show_defaults(qv, printer):
    try:
        qv.default_settings(printer, silent=True, use_serial=True, directory=FANCY, file_name="a.tif")
        print("set")
    except QvRtlError:
        print("refused")


def main(library, printer):
    qv = QvRtl(library)
    print("|".join(qv.printers()))
    print(qv.settings(printer)["Mode"])
    print("".join(qv.change_settings(printer, mode=1, defaultsavedir=FANCY + '\t"')))
    unknown = [item for i in range(100) for item in (f"nothing{i:04}{FANCY}", "1")]
    print(units(qv.command("setdevmode", "printername", printer, *unknown)))
    show_status(qv, FANCY)
    show_status(qv, "x" * 4096)
    print("answered" if qv.request("<query><global/></query>").root.get("to") == "query" else "?")
    change = qv.update_printer(printer, COPIES)
    print(change.previous["dmCopies"], change.previous["exOut.UseSerial"])
    try:
        qv.update_printer(FANCY, COPIES)
    except RequestError as failure:
        print(failure.status)
    show_defaults(qv, printer)
    show_defaults(qv, FANCY)


main(*sys.argv[1:])
