# For the settings_* scripts beside this one, behind common.sh.

# The bytes of the registry and the journal, without the index, which a look changes.
machine_state() {
    find "$QV_HOST_ROOT" \( -path '*/registry/*' ! -name '*-shm' -o -name changes.jsonl \) -type f -exec md5sum {} + | sort
}
machine_before() { machine=$(machine_state); }
same_machine() {
    [ "$machine" = "$(machine_state)" ] || { echo "something was written by the command before"; exit 1; }
}

# same_lines LINE...: standard output ($out) is these lines.
same_lines() {
    diff <(printf '%s\n' "$@") "$out" || { echo "standard output differs"; exit 1; }
}

# json_is FILE EXPRESSION: the expression of the document d is true.
json_is() {
    python3 -c 'import json, sys
d = json.load(open(sys.argv[1]))
sys.exit(0 if eval(sys.argv[2]) else "not true: " + sys.argv[2])' "$1" "$2"
}

# user_block PRINTER FILE: the block of the registry as bytes. set_user_block PRINTER FILE.
registry_block() {
    python3 - "$@" <<'END'
import os, re, subprocess, sys
action, qv, printer, path = sys.argv[1:]
key = r"HKEY_CURRENT_USER\Printers\DevModePerUser"
if action == "read":
    text = subprocess.run([qv, "host", "export", key], capture_output=True, text=True, check=True).stdout
    value = re.search(r'^"%s"=hex:((?:[0-9a-f,]|\\\n\s*)*)' % re.escape(printer), text, re.M).group(1)
    open(path, "wb").write(bytes.fromhex(re.sub(r"[^0-9a-f]", "", value)))
else:
    value = ",".join("%02x" % b for b in open(path, "rb").read())
    reg = path + ".reg"
    open(reg, "w").write('Windows Registry Editor Version 5.00\n\n[%s]\n"%s"=hex:%s\n' % (key, printer, value))
    subprocess.run([qv, "host", "import", reg], check=True)
END
}
user_block() { registry_block read "$qv" "$1" "$2"; }
set_user_block() { registry_block write "$qv" "$1" "$2"; }

# patch FILE OFFSET BYTES-IN-HEX
patch() {
    python3 -c 'import sys
path, offset, data = sys.argv[1], int(sys.argv[2]), bytes.fromhex(sys.argv[3])
b = bytearray(open(path, "rb").read()); b[offset:offset + len(data)] = data; open(path, "wb").write(b)' "$@"
}
