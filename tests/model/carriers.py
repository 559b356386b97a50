"""Carriers as docs/FORMAT.md describes them: a writer that can also write what no hide would, and
a reader that says what may be made of such a carrier."""

import dataclasses
import re

DIRECTORY = 2500
MAIN = b"s@4)"
NAME, LENGTH, CHECK = b"&hed#", b"?Kj*^", b"!`<jhbddfu"
BLANKS = b" \t\r\n\v\f"
VALUE_LIMIT = 49

# Windows-1252, with the control characters that it leaves out.
_CODE_PAGE = {
    code: chr(code) if code in (0x81, 0x8D, 0x8F, 0x90, 0x9D) else bytes([code]).decode("cp1252")
    for code in range(256)
}


_CODES = {letter: code for code, letter in _CODE_PAGE.items()}


def to_text(text8):
    return "".join(_CODE_PAGE[code] for code in text8)


def to_text8(text):
    """The bytes of a text, or None if the code page lacks a character."""
    return bytes(map(_CODES.get, text)) if _CODES.keys() >= {*text} else None


def _key(password):
    return "".join(str(code) for code in password).encode()


def encipher(plain, password):
    key = _key(password)
    return b"".join(b"%02X" % (code ^ key[i % len(key)]) for i, code in enumerate(plain))


def decipher(value, password):
    key = _key(password)
    plain = bytearray()
    for i in range(0, len(value), 2):
        digits = re.match(rb"[0-9A-Fa-f]*", value[i : i + 2])[0]
        plain.append(int(digits or b"0", 16) ^ key[i // 2 % len(key)])
    return bytes(plain)


def section(index):
    return b"%ddfg%%" % index


def lines_of(main_name, main_length, hidden, password):
    """The directory's sections, each a list of its lines without line ends. `hidden` holds pairs of
    name and length; lengths may be bytes, to write what is no number."""
    number = lambda length: length if isinstance(length, bytes) else b"%d" % length
    line = lambda key, plain: key + b"=" + encipher(plain, password)
    record = lambda name, length: [line(NAME, name), line(LENGTH, number(length))]
    sections = [[b"[" + MAIN + b"]", *record(main_name, main_length), line(CHECK, password)]]
    for index, (name, length) in enumerate(hidden):
        sections.append([b"[" + section(index) + b"]", *record(name, length)])
    return sections


def text_of(sections):
    return b"".join(line + b"\r\n" for lines in sections for line in lines)


def padded(text):
    """The text as the last 2500 bytes of a carrier; too long a text is cut."""
    if len(text) < DIRECTORY:
        text = text[:-1] + b"\0"
    return text[:DIRECTORY].ljust(DIRECTORY, b"\0")


def carrier_of(main_name, main, hidden, password):
    """A sound carrier. `hidden` holds pairs of name and bytes."""
    lengths = [(name, len(data)) for name, data in hidden]
    return (
        main
        + b"".join(data for _, data in hidden)
        + padded(text_of(lines_of(main_name, len(main), lengths, password)))
    )


@dataclasses.dataclass
class Reading:
    """What a reader may make of a carrier."""
    records: int  # By the rule of hiding: the first index without a length.
    main_name: bytes  # Empty if there is none.
    opens: bool = False  # The password is right, and a file is hidden in it.
    main_length: int | None = None  # None where it must be refused.
    files: list | None = None  # Name (UTF-8 text), offset and length; None: to be refused.
    whole: bool = False  # The parts fill the carrier, so that a file can be added behind them.


def read(carrier, password):
    text = carrier[-DIRECTORY:].split(b"\0")[0] if len(carrier) > DIRECTORY else b""
    value = lambda name, key: _value(text, name, key)
    records = 0
    while value(section(records), LENGTH):
        records += 1
    reading = Reading(records, decipher(value(MAIN, NAME), password))
    # By the rule of recovering, no file is hidden in it, or the password is wrong.
    if not value(section(0), NAME) or decipher(value(MAIN, CHECK), password) != password:
        return reading
    reading.opens, end = True, len(carrier) - DIRECTORY
    offset = reading.main_length = _length(decipher(value(MAIN, LENGTH), password), end)
    if offset is None:
        return reading
    files = []
    while value(section(len(files)), NAME):
        name = decipher(value(section(len(files)), NAME), password)
        length = _length(decipher(value(section(len(files)), LENGTH), password), end - offset)
        if length is None or not is_bare(name):
            return reading
        files.append((to_text(name), offset, length))
        offset += length
    reading.files = files
    reading.whole = len(files) == records and offset == end
    return reading


def _value(text, wanted_section, wanted_key):
    inside = False
    for line in text.split(b"\n"):
        line = line.strip(BLANKS)
        if line.startswith(b"["):
            if inside:
                return b""
            name = line[1:].split(b"]")[0].strip(BLANKS)
            inside = name.lower() == wanted_section.lower()
        elif inside and b"=" in line and not line.startswith(b";"):
            key, value = line.split(b"=", 1)
            if key.strip(BLANKS).lower() == wanted_key.lower():
                value = value.strip(BLANKS)
                if len(value) > 1 and value[0] == value[-1] and value[:1] in b"\"'":
                    value = value[1:-1]
                return value[:VALUE_LIMIT]
    return b""


def _length(text, most):
    if not re.fullmatch(rb"[0-9]+", text):
        return None
    return int(text) if 1 <= int(text) <= most else None


def is_bare(name):
    refused = b"/\\\x7f\x81\x8d\x8f\x90\x9d" + bytes(range(32))
    return name not in (b"", b".", b"..") and name[1:2] != b":" and not set(name) & set(refused)
