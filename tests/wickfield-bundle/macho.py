"""Code for macOS, as far as its headers go. As a program it writes the seeds of the fuzzer into a folder."""
import pathlib
import struct
import sys

X86_64, ARM64, POWERPC = 0x01000007, 0x0100000C, 18
PLUGIN = 8
NOBODY, AD_HOC, SOMEBODY = "nobody", "ad hoc", "somebody"


def signature(signer):
    flags = 0x2 if signer == AD_HOC else 0x10000
    directory = struct.pack(">4I", 0xFADE0C02, 44, 0x20400, flags) + bytes(28)
    certificates = struct.pack(">2I", 0xFADE0B01, 24) + bytes(16) if signer == SOMEBODY else b""
    first, second = 28, 28 + len(directory)
    return struct.pack(">7I", 0xFADE0CC0, second + len(certificates), 2, 0, first, 0x10000, second) \
        + directory + certificates


def slice_for(processor, signer=SOMEBODY, order="<", file_type=PLUGIN, oldest=11):
    signed = b"" if signer == NOBODY else signature(signer)
    wide = processor & 0x01000000
    header_size = 32 if wide else 28
    commands = struct.pack(order + "6I", 0x32, 24, 1, oldest << 16, 0, 0)
    if signed:
        commands += struct.pack(order + "4I", 0x1D, 16, header_size + len(commands) + 16, len(signed))
    header = struct.pack(order + "7I", 0xFEEDFACF if wide else 0xFEEDFACE, processor, 0, file_type,
                         2 if signed else 1, len(commands), 0)
    return header + (bytes(4) if wide else b"") + commands + signed


def universal(slices, wide=False, alignment=4096):
    head = struct.pack(">2I", 0xCAFEBABF if wide else 0xCAFEBABE, len(slices))
    offset, body = alignment, b""
    for processor, code in slices:
        head += struct.pack(">2I2Q2I" if wide else ">5I", processor, 0, offset, len(code), 12, *([0] if wide else []))
        padded = code + bytes(-len(code) % alignment)
        body += padded
        offset += len(padded)
    return head + bytes(alignment - len(head)) + body


def both(signer=SOMEBODY, **options):
    return universal([(processor, slice_for(processor, signer, **options)) for processor in (X86_64, ARM64)])


def write_seeds(folder):
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    pairs = [(X86_64, slice_for(X86_64, NOBODY)), (ARM64, slice_for(ARM64, AD_HOC))]
    (folder / "single").write_bytes(slice_for(ARM64))
    (folder / "big_endian").write_bytes(slice_for(POWERPC, NOBODY, ">"))
    (folder / "universal").write_bytes(universal(pairs, alignment=256))
    (folder / "universal_wide").write_bytes(universal(pairs, wide=True, alignment=256))
    (folder / "java").write_bytes(struct.pack(">I2H", 0xCAFEBABE, 0, 61) + bytes(16))


if __name__ == "__main__":
    write_seeds(sys.argv[1])
