"""Calls of processes that multiprocessing forks: 4,000 that log and read, by four processes.

    forked_calls.py LIBRARY
The machine is the one of QV_HOST_ROOT, made from the samples. Prints the id of the process that made
each call.
"""
import multiprocessing
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "../../bindings/python"))
from qv_rtl import QvRtl  # noqa: E402

qv = QvRtl(sys.argv[1])
settings = qv.settings("Vantrel Fax")


def call(number):
    assert qv.settings("Vantrel Fax") == settings
    qv.do_xml("Z:/dev/null", f"Z:/missing/{number}.")  # logs that it cannot be written
    return os.getpid()


if __name__ == "__main__":
    with multiprocessing.get_context("fork").Pool(4) as pool:
        processes = pool.map(call, range(4000), 50)
    assert os.getpid() not in processes
    print(*processes, sep="\n")
