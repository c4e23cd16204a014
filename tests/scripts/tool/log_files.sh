# For the scripts beside this one, behind common.sh: log files to look at. Sets files and writer.
files=$QV_HOST_ROOT/files
writer=$(cd "$programs/../tests" && pwd)/log_writer
mkdir -p "$files"

# make_log FILE [SECONDS]: five records of three processes, byte by byte as the format has them, 1 to 5.5 seconds
# behind a time since 1970.
make_log() {
    python3 - "$1" "${2:-1769817600}" <<'END'
import struct, sys
base = (int(sys.argv[2]) + 11644473600) * 10**7
def string(text):
    data = text.encode()
    return bytes([0x11, len(data)]) + data if data else b"\0"
def record(ticks, level, pid, tid, session, source, line, text, label="", data=b""):
    body = string(source) + string(text) + (string(label) + data if label or data else b"")
    fixed = struct.pack("<QiIIIi", base + ticks, ord(level), pid, tid, session & 0xFFFFFFFF, line)
    return bytes([0x61, len(body)]) + fixed + body
second = 10**7
records = [
    record(1 * second, "X", 11, 21, 1, "spooler", 10, "one"),
    record(2 * second, "*", 11, 22, 1, "spooler", 20, 'two, "half"'),
    record(3 * second, "i", 12, 23, 2, "monitor", 30, "tab\tline\n\x1b[2J end"),
    record(4 * second, " ", 12, 23, -1, "Monitor", 40, "GRÜN", "block", b"\0\1\xfe\xff"),
    record(5 * second + second // 2, "X", 13, 24, 2, "printer_query", 50, "five"),
]
ring = b""
for entry in records:
    ring += struct.pack("<I", 96 + len(ring) + 4 + len(entry)) + entry
header = struct.pack("<IQIIIII", 1, 7, len(records), 4096, 96 + len(ring), 96, 0).ljust(96, b"\0")
open(sys.argv[1], "wb").write(header + ring)
END
}

# set_back FILE: sets the times of the second and third record back by an hour.
set_back() {
    python3 - "$1" <<'END'
import struct, sys
image, at = bytearray(open(sys.argv[1], "rb").read()), 96
for number in range(1, 4):
    time = at + 6
    if number > 1:
        struct.pack_into("<Q", image, time, struct.unpack_from("<Q", image, time)[0] - 3600 * 10**7)
    at, = struct.unpack_from("<I", image, at)
open(sys.argv[1], "wb").write(image)
END
}

# flip FILE OFFSET...: inverts all bits of the bytes at the offsets.
flip() {
    python3 - "$@" <<'END'
import sys
image = bytearray(open(sys.argv[1], "rb").read())
for offset in map(int, sys.argv[2:]):
    image[offset] ^= 0xFF
open(sys.argv[1], "wb").write(image)
END
}
