"""A tool in Python: lists all printers, sets the number of copies of one, shows what it was before.

    settings_tool.py PRINTER COPIES
"""
import sys

from qv_rtl import QvRtl, QvRtlError


def main(printer, copies):
    qv = QvRtl()
    for found in qv.query_printers():
        print(found.findtext("name"))
    change = qv.update_printer(printer, {"dmCopies": copies})
    if "dmCopies" in change.skipped:
        raise QvRtlError(f"dmCopies cannot be {copies}")
    print("dmCopies was", change.previous["dmCopies"])
    print("Mode is", qv.settings(printer)["Mode"])


if __name__ == "__main__":
    if len(sys.argv) != 3:
        print("usage: settings_tool.py PRINTER COPIES", file=sys.stderr)
        sys.exit(2)
    try:
        main(*sys.argv[1:])
    except QvRtlError as failure:
        sys.exit(str(failure))
