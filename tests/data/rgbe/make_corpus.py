#!/usr/bin/env python3
"""Writes the malformed-file corpus and its expectations (cases.txt).

Every file's pixels, in whatever encoding, are pixel(k) for k = 0, 1, ... so
the test can check each decoded pixel against the same formula. cases.txt has
one line per file:
  name width height header_result message reader_result filled_pixels
message: '-' for none, 'read' for a read error, else the format error text
(blanks as '_'). reader_result and filled_pixels are '-' where the header
failed and the reader starts at an arbitrary place in the file.
"""
import os

HERE = os.path.dirname(os.path.abspath(__file__))
FORMAT = b"FORMAT=32-bit_rle_rgbe\n"


def pixel(k):
    # Runs in red and blue, literals in green, a slowly changing exponent.
    return bytes(((k // 5) * 3 % 256, (k * 7 + 1) % 256, 200 if k % 40 < 30 else k % 256,
                  120 + (k // 8) % 16))


def header(width, height, extra=b""):
    return (b"#?RADIANCE\n# a comment\n" + FORMAT + extra +
            b"EXPOSURE=          1.0000000000000\n\n" +
            b"-Y %d +X %d\n" % (height, width))


def flat(width, height, first=0):
    return b"".join(pixel(k) for k in range(first, width * height))


def rle_plane(values, literal_max=128):
    out = bytearray()
    i = 0
    while i < len(values):
        run = 1
        while i + run < len(values) and values[i + run] == values[i] and run < 127:
            run += 1
        if run >= 3:
            out += bytes((128 + run, values[i]))
            i += run
            continue
        j = i
        while j < len(values) and j - i < literal_max:
            if j + 2 < len(values) and values[j] == values[j + 1] == values[j + 2]:
                break
            j += 1
        out += bytes((j - i,)) + bytes(values[i:j])
        i = j
    return bytes(out)


def rle_scanline(width, row, literal_max=128):
    pixels = [pixel(row * width + x) for x in range(width)]
    out = bytes((2, 2, width >> 8, width & 255))
    for c in range(4):
        out += rle_plane([p[c] for p in pixels], literal_max)
    return out


def rle(width, height, rows=None):
    return b"".join(rle_scanline(width, y) for y in range(height if rows is None else rows))


cases = []


def case(name, data, width, height, header_result, message="-", reader="-", filled="-"):
    with open(os.path.join(HERE, name), "wb") as f:
        f.write(data)
    cases.append(f"{name} {width} {height} {header_result} {message.replace(' ', '_')} {reader} {filled}")


W, H = 16, 3
good = header(W, H) + rle(W, H)
case("good_rle.hdr", good, W, H, 0, reader=0, filled=W * H)
case("good_flat.hdr", header(W, H) + flat(W, H), W, H, 0, reader=1, filled=W * H)
case("narrow_flat.hdr", header(7, H) + flat(7, H), 7, H, 0, reader=0, filled=7 * H)
case("narrow_flat_truncated.hdr", header(7, H) + flat(7, H)[:-6], 7, H, 0, reader=1, filled=7 * H - 2)
case("flat_after_first_scanline.hdr", header(W, H) + rle(W, H, rows=1) + flat(W, H, first=W), W, H, 0,
     reader=1, filled=W * H)
case("flat_fallback_truncated.hdr", header(W, H) + rle(W, H, rows=1) + flat(W, H, first=W)[:-5], W, H, 0,
     reader=1, filled=W * H - 2)
case("larger_than_caller.hdr", good, W, 2, 0, reader=0, filled=W * 2)
case("header_says_more.hdr", header(W, 1000) + rle(W, H), W, H, 0, reader=0, filled=W * H)
# A literal of exactly 128 bytes (the count that is a literal, not a run).
wide = 130
wide_data = header(wide, 1) + bytes((2, 2, 0, wide))
for c in range(4):
    values = [pixel(x)[c] for x in range(wide)]
    wide_data += bytes((128,)) + bytes(values[:128]) + bytes((2,)) + bytes(values[128:])
case("literal_128.hdr", wide_data, wide, 1, 0, reader=0, filled=wide)

case("empty.hdr", b"", W, H, -1, "read", 1, 0)
case("truncated_header.hdr", b"#?RADIANCE\n# a comm", W, H, -1, "read", 1, 0)
case("no_blank_line.hdr", b"#?RADIANCE\n" + FORMAT, W, H, -1, "read", 1, 0)
case("no_size_line.hdr", b"#?RADIANCE\n" + FORMAT + b"\n", W, H, -1, "read", 1, 0)
case("bad_token.hdr", b"#!RADIANCE\n" + FORMAT + b"\n-Y 3 +X 16\n" + rle(W, H), W, H, -1,
     "bad initial token")
case("single_hash.hdr", b"#\n" + FORMAT + b"\n-Y 3 +X 16\n" + rle(W, H), W, H, -1, "bad initial token")
case("no_format.hdr", b"#?RADIANCE\nGAMMA=1.0\n\n-Y 3 +X 16\n" + rle(W, H), W, H, -1,
     "no FORMAT specifier found")
case("format_with_blank.hdr", b"#?RADIANCE\nFORMAT=32-bit_rle_rgbe \n\n-Y 3 +X 16\n" + rle(W, H), W, H,
     -1, "no FORMAT specifier found")
case("format_after_blank.hdr", b"#?RADIANCE\n\n" + FORMAT + b"-Y 3 +X 16\n" + rle(W, H), W, H, -1,
     "no FORMAT specifier found")
case("plus_y.hdr", b"#?RADIANCE\n" + FORMAT + b"\n+Y 3 +X 16\n" + rle(W, H), W, H, -1,
     "missing image size specifier")
case("height_only.hdr", b"#?RADIANCE\n" + FORMAT + b"\n-Y 3\n" + rle(W, H), W, H, -1,
     "missing image size specifier")
case("x_before_y.hdr", b"#?RADIANCE\n" + FORMAT + b"\n+X 16 -Y 3\n" + rle(W, H), W, H, -1,
     "missing image size specifier")
case("tight_size_line.hdr", b"#?RADIANCE\n" + FORMAT + b"\n-Y3+X16\n" + rle(W, H), W, H, 0, reader=0,
     filled=W * H)
# The size line scans like "-Y %d +X %d": a blank matches any run of white
# space, numbers may carry a sign and anything after the width is ignored;
# the literal "-Y" must come first.
case("loose_size_line.hdr", b"#?RADIANCE\n" + FORMAT + b"\n-Y  -4\t+X +17 trailing\n" + rle(W, H), W, H, 0,
     reader=0, filled=W * H)
case("blank_before_size.hdr", b"#?RADIANCE\n" + FORMAT + b"\n -Y 3 +X 16\n" + rle(W, H), W, H, -1,
     "missing image size specifier")
case("nul_line_ends_header.hdr", b"#?RADIANCE\n" + FORMAT + b"\0junk\n-Y 3 +X 16\n" + rle(W, H), W, H, 0,
     reader=0, filled=W * H)
# Lines are read 127 characters at a time: a 126-character comment and its
# line feed fit; a 127-character one leaves its line feed to be read as a
# blank line, which ends the header early.
case("long_line_fits.hdr", header(W, H, b"#" + b"x" * 125 + b"\n") + rle(W, H), W, H, 0, reader=0,
     filled=W * H)
case("long_line_splits.hdr", header(W, H, b"#" + b"x" * 126 + b"\n") + rle(W, H), W, H, -1,
     "missing image size specifier")
case("very_long_line.hdr", header(W, H, b"#" + b"y" * 600 + b"\n") + rle(W, H), W, H, 0, reader=0,
     filled=W * H)

# Broken run-length data in the second scanline: the first stays decoded.
first = rle(W, H, rows=1)
def broken(name, second_scanline):
    case(name, header(W, H) + first + second_scanline, W, H, 0, reader=1, filled=W)

start = bytes((2, 2, 0, W))
broken("zero_run.hdr", start + bytes((128, 5)))
broken("overlong_run.hdr", start + bytes((128 + 17, 5)))
broken("run_past_plane_end.hdr", start + bytes((128 + 10, 5, 128 + 7, 6)))
# Runs one longer than the plane, followed by the scanline's other planes: a
# reader that let the run spill over would decode the scanline (and, in the
# last plane, write past its buffer).
broken("overlong_run_then_data.hdr", start + bytes((128 + 17, 5)) + bytes((128 + 16, 1)) * 3)
broken("overlong_run_last_plane.hdr", start + bytes((128 + 16, 1)) * 3 + bytes((128 + 17, 5)))
broken("zero_literal.hdr", start + bytes((0, 5)))
# A count of 0 followed by a valid plane: a reader that accepted the empty
# literal would go on and decode the scanline.
broken("zero_literal_then_data.hdr", start + bytes((0, 5)) + rle_scanline(W, 1)[4:])
broken("overlong_literal.hdr", start + bytes((17, 5)) + bytes(16))
broken("width_mismatch.hdr", bytes((2, 2, 0, W + 1)) + rle_scanline(W, 1)[4:])
broken("eof_in_start.hdr", start[:3])
broken("eof_after_start.hdr", start)
broken("eof_in_code.hdr", start + bytes((128 + 4,)))
broken("eof_in_literal.hdr", start + bytes((10, 1, 2, 3)))
broken("eof_in_exponent_plane.hdr", rle_scanline(W, 1)[:-2])
case("eof_after_header.hdr", header(W, H), W, H, 0, reader=1, filled=0)

with open(os.path.join(HERE, "cases.txt"), "w") as f:
    f.write("# name width height header_result message reader_result filled_pixels (make_corpus.py)\n")
    f.write("\n".join(cases) + "\n")
