"""The command interfaces of qv_rtl, text commands and XML requests, and the shared log.

    from qv_rtl import QvRtl

    qv = QvRtl()
    for printer in qv.printers():
        print(printer, qv.settings(printer)["Mode"])
    before = qv.update_printer("Vantrel Fax", {"dmCopies": 2})
    qv.write_log("the nightly job begins", source="nightly_job")
    for record in qv.follow_log():
        print(record.time, record.level, record.text)

All settings are those that the current user has for a printer. Texts are any Python text, those
outside the Basic Multilingual Plane included; they cross as UTF-16. Objects may be used by several
threads at once, a Log by one.
"""
import ctypes
import datetime
import os
import sys
import tempfile
import time
import typing
import xml.etree.ElementTree as ElementTree

__all__ = ["Change", "CommandError", "Log", "LogError", "LogRecord", "QvRtl", "QvRtlError",
           "RequestError", "Response"]

# Units of text that the first call of a command has room for.
_FIRST_LENGTH = 4096

# Seconds between two looks at a log that is followed.
_PAUSE = 0.1

_LEVELS = {"error": "X", "warning": "*", "information": "i", "trace": " ", "log": ">"}
_WORDS = {letter: word for word, letter in _LEVELS.items()}


class QvRtlError(Exception):
    """A call of the library failed."""


class CommandError(QvRtlError):
    """A text command failed: `status` is the negative status, `text` the library's message."""

    def __init__(self, status, text):
        super().__init__(f"status {status}: {text}")
        self.status = status
        self.text = text


class RequestError(QvRtlError):
    """A response holds errors. `status` is the system's code of the first error, 0 without one.

    `response` is the whole response; it may hold answers too.
    """

    def __init__(self, response):
        super().__init__("; ".join(response.errors))
        self.status = int(response.root.find("message/error").get("W32Code", "0"))
        self.response = response


class LogError(QvRtlError):
    """The log cannot be written or read; `status` is the system's code."""

    def __init__(self, action, status):
        super().__init__(f"The log cannot be {action}: system error {status}")
        self.status = status


class Response:
    """The answer to an XML request; `root` is its root element."""

    def __init__(self, root):
        self.root = root

    @property
    def errors(self):
        return self._messages("error")

    @property
    def warnings(self):
        return self._messages("warning")

    def check(self):
        """Raises RequestError when there is an error, else returns the response."""
        if self.errors:
            raise RequestError(self)
        return self

    def _messages(self, kind):
        found = self.root.findall("message/" + kind)
        return [" ".join(filter(None, (item.text, item.get("W32Msg")))) for item in found]


class Change:
    """The result of an update: `previous` has the values before, by field name. `skipped` has the
    names of fields that are unknown, or that cannot take the value."""

    def __init__(self, previous, skipped):
        self.previous = previous
        self.skipped = skipped


class LogRecord(typing.NamedTuple):
    """A record of the log."""

    time: datetime.datetime  # UTC; None when the time of the record is not possible
    level: str  # error, warning, information, trace, log (the log itself), or another letter
    process: int
    thread: int
    session: int  # None when it is not known
    source: str
    line: int
    text: str
    label: str  # what `data` is
    data: bytes
    missed: int  # records in front of it that were overwritten before they could be read
    made_anew: bool  # the log was deleted or replaced in front of it


class Log:
    """An iterator over the records of a log, each once.

    It waits for records that come later, until no record has come for `timeout` seconds; without a
    timeout for ever. It closes itself at its end, with `close` and as a context manager.
    """

    def __init__(self, library, file, only_new, timeout):
        self._library, self._timeout, self._log = library, timeout, ctypes.c_void_p()
        status = library.QVOpenLog(_utf16(os.fspath(file or "")), only_new, self._log)
        if status != 0:
            raise LogError("opened", status)

    def __iter__(self):
        return self

    def __next__(self):
        began = time.monotonic()
        record = _Record()
        while self._log:
            status = self._library.QVReadLog(self._log, record)
            if status == 1:
                return _log_record(record)
            if status < 0:
                raise LogError("read", -status)
            if self._timeout is not None and time.monotonic() - began >= self._timeout:
                break
            time.sleep(_PAUSE)
        self.close()
        raise StopIteration

    def close(self):
        if self._log:
            self._library.QVCloseLog(self._log)
        self._log = None

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.close()

    def __del__(self):
        self.close()


def library_names(platform=sys.platform):
    """The file names of the library, in the order in which the loader is asked for them."""
    if platform in ("win32", "cygwin"):
        return ["qv_rtl.dll"]
    return ["libqv_rtl.so.1", "libqv_rtl.so"]


class QvRtl:
    """The library. `path` is its file; without one the system's loader looks for it by name."""

    def __init__(self, path=None):
        self._library = _load([path] if path is not None else library_names())
        _declare(self._library)

    def command(self, *items):
        """Makes a text command call of a word, keywords and values, and returns its answer."""
        line = _utf16("\t".join(_quoted(item) for item in items))
        length = _FIRST_LENGTH
        while True:
            buffer = ctypes.create_string_buffer((length + 1) * 2)
            status = self._library.DoCommandW(line, buffer, length)
            text = _text(buffer)
            # A status does not tell the length of its message. A full buffer may hold a cut one.
            if status < 0 and len(text.encode("utf-16-le", "surrogatepass")) < length * 2:
                raise CommandError(status, text)
            if 0 <= status <= length:
                return text
            length = max(status, length * 2)

    def printers(self):
        """The names of all printers of the product."""
        answer = self.command("getorloprinters")
        return answer.split("\t") if answer else []

    def settings(self, printer):
        """The printer's main settings, by the names of the getdevmode command."""
        items = self.command("getdevmode", "printername", printer).split("\t")
        if len(items) % 2 != 0:
            raise QvRtlError("A setting holds a tab: ask for the settings with an XML request")
        return dict(zip(items[0::2], items[1::2]))

    def change_settings(self, printer, **values):
        """Changes main settings, by the keywords of the setdevmode command, all or none.

        Returns the lines that name unknown keywords.
        """
        items = [str(item) for pair in values.items() for item in pair]
        return self.command("setdevmode", "printername", printer, *items).splitlines()

    def default_settings(self, printer, *, silent=False, run=False, use_serial=False,
                         use_document_name=False, directory="", file_name="", program="",
                         parameters="", message="", window_class="", message_format=""):
        """Sets the complete default behaviour of a printer."""
        flags = [bool(flag) for flag in (silent, run, use_serial, use_document_name)]
        texts = [_utf16(text) for text in (directory, file_name, program, parameters, message,
                                           window_class, message_format)]
        if self._library.SetQVDefaultSetting(_utf16(printer), *flags, *texts) != 1:
            raise QvRtlError(f"The settings of {printer!r} cannot be set")

    def do_xml(self, request_file, response_file):
        """Carries out a request file and writes the response file, which is created or replaced.

        When the response file cannot be created, there is no error: the file is missing, and the log
        has the reason.
        """
        if self._library.DoXMLW(_utf16(os.fspath(request_file)),
                                _utf16(os.fspath(response_file))) != 1:
            raise QvRtlError("The request was not answered")

    def request(self, document):
        """Carries out a request, an element or its text. Returns a Response, also with errors."""
        if not isinstance(document, str):
            document = ElementTree.tostring(document, "unicode")
        with tempfile.TemporaryDirectory() as folder:
            request_file = os.path.join(folder, "request.xml")
            response_file = os.path.join(folder, "response.xml")
            with open(request_file, "wb") as file:
                file.write(document.encode("utf-8-sig"))
            self.do_xml(request_file, response_file)
            try:
                return Response(ElementTree.parse(response_file).getroot())
            except (OSError, ElementTree.ParseError) as failure:
                raise QvRtlError(f"The response cannot be read: {failure}") from failure

    def query_printers(self, driver=None):
        """All printers, or those of one driver, as elements with name, port and devmode."""
        query = ElementTree.Element("query")
        wanted = ElementTree.SubElement(query, "printer")
        if driver is not None:
            ElementTree.SubElement(wanted, "driver").text = driver
        return self.request(query).check().root.findall("printer")

    def update_printer(self, printer, values):
        """Changes fields by name, as {"dmCopies": 2, "exOut.UseSerial": False}; returns a Change."""
        update = ElementTree.Element("update")
        target = ElementTree.SubElement(update, "printer")
        ElementTree.SubElement(target, "name").text = printer
        devmode = ElementTree.SubElement(target, "devmode")
        for name, value in values.items():
            parent, field = devmode, name
            if "." in name:
                group, field = name.split(".", 1)
                parent = devmode.find(group)
                if parent is None:
                    parent = ElementTree.SubElement(devmode, group)
            ElementTree.SubElement(parent, field).text = str(value)
        answer = self.request(update).check().root.find("printer/devmode")
        fields = _fields(answer)
        previous = {name: fields[name] for name in values if name in fields}
        return Change(previous, [name for name in values if name not in previous])


    def write_log(self, text, level="information", source="python", line=0):
        """Writes a line into the log in force. `level` is error, warning, information or trace.

        A text of more than 32,000 units of UTF-16 is cut; the text says so at its end.
        """
        letter = ord(_LEVELS.get(level, level if len(level) == 1 else "?"))
        status = self._library.QVWriteLog(letter, _utf16(source), line, _utf16(text))
        if status == 87:  # ERROR_INVALID_PARAMETER
            raise ValueError(f"a level {level!r} or a source {source!r} cannot be")
        if status != 0:
            raise LogError("written", status)

    def follow_log(self, file=None, *, only_new=True, timeout=None):
        """A Log of the new records of a file, or of the log in force.

        Without `only_new` it begins with the oldest record: list(qv.follow_log(only_new=False,
        timeout=0)) is what the log holds now.
        """
        return Log(self._library, file, only_new, timeout)


class _Record(ctypes.Structure):
    """QVLogRecord of log_record_c.h."""

    _fields_ = [
        ("time", ctypes.c_ulonglong),
        ("missed", ctypes.c_ulonglong),
        ("source", ctypes.c_void_p),
        ("text", ctypes.c_void_p),
        ("label", ctypes.c_void_p),
        ("data", ctypes.c_void_p),
        ("sourceLength", ctypes.c_int),
        ("textLength", ctypes.c_int),
        ("labelLength", ctypes.c_int),
        ("dataSize", ctypes.c_int),
        ("level", ctypes.c_int),
        ("line", ctypes.c_int),
        ("processId", ctypes.c_uint),
        ("threadId", ctypes.c_uint),
        ("sessionId", ctypes.c_uint),
        ("madeAnew", ctypes.c_int),
    ]


def _log_record(record):
    def text(units, length):
        return ctypes.string_at(units, length * 2).decode("utf-16-le", "surrogatepass")

    try:
        moment = (datetime.datetime(1601, 1, 1, tzinfo=datetime.timezone.utc)
                  + datetime.timedelta(microseconds=record.time // 10))
    except OverflowError:
        moment = None
    letter = chr(record.level) if 0 <= record.level < 0x110000 else "?"
    return LogRecord(
        moment, _WORDS.get(letter, letter), record.processId, record.threadId,
        None if record.sessionId == 0xFFFFFFFF else record.sessionId,
        text(record.source, record.sourceLength), record.line,
        text(record.text, record.textLength), text(record.label, record.labelLength),
        ctypes.string_at(record.data, record.dataSize) if record.dataSize else b"",
        record.missed, record.madeAnew != 0)


def _load(names):
    for name in names:
        try:
            return ctypes.CDLL(name)
        except OSError as failure:
            reason = failure
    raise QvRtlError(f"The library cannot be loaded: {reason}")


def _declare(library):
    """The calls' types as qv_rtl_c.h has them; a text is a buffer of UTF-16."""
    text, number, byte = ctypes.c_char_p, ctypes.c_int, ctypes.c_ubyte
    log, log_place = ctypes.c_void_p, ctypes.POINTER(ctypes.c_void_p)
    record = ctypes.POINTER(_Record)
    library.DoCommandW.argtypes = [text, text, number]
    library.DoXMLW.argtypes = [text, text]
    library.SetQVDefaultSetting.argtypes = [text, byte, byte, byte, byte] + [text] * 7
    library.QVWriteLog.argtypes = [number, text, number, text]
    library.QVOpenLog.argtypes = [text, number, log_place]
    library.QVReadLog.argtypes = [log, record]
    library.QVCloseLog.argtypes = [log]
    for call in (library.DoCommandW, library.DoXMLW, library.SetQVDefaultSetting,
                 library.QVWriteLog, library.QVOpenLog, library.QVReadLog):
        call.restype = number
    library.QVCloseLog.restype = None


def _utf16(text):
    """Zero-terminated UTF-16; a name of Windows may hold half a surrogate pair."""
    if "\0" in text:
        raise ValueError("a text for the library cannot hold a zero character")
    return text.encode("utf-16-le", "surrogatepass") + b"\0\0"


def _text(buffer):
    units = buffer.raw
    end = next(i for i in range(0, len(units), 2) if units[i:i + 2] == b"\0\0")
    return units[:end].decode("utf-16-le", "surrogatepass")


def _quoted(item):
    """The item in the form that a command line needs: a tab ends an item."""
    if "\t" in item or item.startswith('"'):
        return '"' + item.replace('"', '""') + '"'
    return item


def _fields(devmode):
    fields = {}
    for child in devmode if devmode is not None else ():
        for leaf in child:
            fields[f"{child.tag}.{leaf.tag}"] = leaf.text or ""
        if len(child) == 0:
            fields[child.tag] = child.text or ""
    return fields
