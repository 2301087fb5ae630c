"""A 64-bit Windows image: what its headers say, and the few places where they are changed."""
import array
import struct
import uuid

IMPORTS, SECURITY, DEBUG, LOAD_CONFIGURATION = 1, 4, 6, 10  # data directories
CODE_VIEW = 2  # type of a debug directory's entry


class NoImage(ValueError):
    pass


def code_view_id(record):
    """The build id of a CodeView record, as 32 digits; nothing when it is of another form."""
    is_known = record[:4] == b"RSDS" and len(record) >= 24
    return uuid.UUID(bytes_le=bytes(record[4:20])).hex if is_known else None


class Image:
    def __init__(self, data):
        self.data = bytearray(data)
        self.header = self.number(60, "I") + 24  # the optional header
        if self.data[:2] != b"MZ" or self.number(self.header, "H") != 0x20B:
            raise NoImage("no 64-bit Windows image")
        self.time_stamp = self.number(self.header - 16, "I")
        self.base = self.number(self.header + 24, "Q")
        self.file_alignment = self.number(self.header + 36, "I")
        self.dll_characteristics = self.number(self.header + 70, "H")
        self.sections = list(self._sections())

    def number(self, offset, form):
        try:
            return struct.unpack_from("<" + form, self.data, offset)[0]
        except struct.error as error:
            raise NoImage("image is cut") from error

    def _sections(self):
        """Each as (name, address, size in memory, size in the file, offset)."""
        first = self.header + self.number(self.header - 4, "H")
        for at in range(first, first + 40 * self.number(self.header - 18, "H"), 40):
            name = bytes(self.data[at:at + 8]).rstrip(b"\0").decode("latin-1")
            size, address, raw_size, offset = struct.unpack_from("<4I", self.data, at + 8)
            yield name, address, size, raw_size, offset

    def offset_of(self, address):
        for _, start, _, raw_size, offset in self.sections:
            if start <= address < start + raw_size:
                return offset + address - start
        raise NoImage(f"address {address:#x} is not in the file")

    def directory(self, index):
        """Address and size of a data directory; zeros when there is none."""
        return struct.unpack_from("<2I", self.data, self.header + 112 + 8 * index)

    def set_directory(self, index, address, size):
        struct.pack_into("<2I", self.data, self.header + 112 + 8 * index, address, size)

    def build_id(self):
        """Of the CodeView record that the linker left (--build-id); nothing without one."""
        address, size = self.directory(DEBUG)
        first = self.offset_of(address) if size else 0
        for at in range(first, first + size, 28):
            kind, length, _, offset = struct.unpack_from("<4I", self.data, at + 12)
            if kind == CODE_VIEW:
                return code_view_id(self.data[offset:offset + length])
        return None

    def text_at(self, address):
        start = self.offset_of(address)
        return bytes(self.data[start:self.data.index(0, start)]).decode("latin-1")

    def imports(self):
        """Names of the imported libraries, in lower case."""
        address, size = self.directory(IMPORTS)
        while size:
            name = self.number(self.offset_of(address) + 12, "I")
            if not name:
                break
            yield self.text_at(name).lower()
            address += 20

    def dependent_load_flags(self):
        address, size = self.directory(LOAD_CONFIGURATION)
        return self.number(self.offset_of(address) + 0x4E, "H") if size else 0

    @property
    def checksum(self):
        return self.number(self.header + 64, "I")

    def expected_checksum(self):
        """Of the file as it is: the sum of its words with carries, its own field apart, and its length."""
        words = array.array("H", bytes(self.data) + bytes(len(self.data) % 2))
        field = (self.header + 64) // 2
        words[field] = words[field + 1] = 0
        total = sum(words)
        while total >> 16:
            total = (total & 0xFFFF) + (total >> 16)
        return total + len(self.data)

    def set_checksum(self):
        struct.pack_into("<I", self.data, self.header + 64, self.expected_checksum())
