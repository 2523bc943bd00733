"""PNG files of every kind, made here chunk by chunk, as Pillow reads them."""

import itertools
import struct
import zlib

import numpy as np
import pytest
import tifffile
from PIL import Image

import orva

SIGNATURE = b"\x89PNG\r\n\x1a\n"
GREY, COLOUR, PALETTE, GREY_ALPHA, COLOUR_ALPHA = 0, 2, 3, 4, 6
CHANNELS = {GREY: 1, COLOUR: 3, PALETTE: 1, GREY_ALPHA: 2, COLOUR_ALPHA: 4}
KINDS = [
    *((GREY, depth) for depth in (1, 2, 4, 8, 16)),
    *((COLOUR, depth) for depth in (8, 16)),
    *((PALETTE, depth) for depth in (1, 2, 4, 8)),
    *((kind, depth) for kind in (GREY_ALPHA, COLOUR_ALPHA) for depth in (8, 16)),
]
ADAM7 = ((0, 0, 8, 8), (4, 0, 8, 8), (0, 4, 4, 8), (2, 0, 4, 4), (0, 2, 2, 4), (1, 0, 2, 2), (0, 1, 1, 2))


def chunk(name, content):
    return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))


def packed(samples, depth):
    """The bytes of each row of samples (y, x, channel)."""
    rows = samples.reshape(len(samples), -1)
    if depth >= 8:
        return rows.astype(f">u{depth // 8}").view(np.uint8).reshape(len(rows), -1)
    bits = rows[..., None] >> np.arange(depth - 1, -1, -1) & 1
    return np.packbits(bits.reshape(len(rows), -1).astype(np.uint8), axis=1)


def filtered(rows, pixel_bytes, kinds):
    """The rows behind the numbers of their filters."""
    result = b""
    before = np.zeros(rows.shape[1], int)
    for row, kind in zip(rows.astype(int), kinds):
        left, corner = (np.pad(r, (pixel_bytes, 0))[: len(r)] for r in (row, before))
        nearest = np.choose(
            np.argmin([abs(before - corner), abs(left - corner), abs(left + before - 2 * corner)], axis=0),
            [left, before, corner],
        )
        predicted = (0 * row, left, before, (left + before) // 2, nearest)[kind]
        result += bytes([kind]) + ((row - predicted) % 256).astype(np.uint8).tobytes()
        before = row
    return result


def png(samples, kind, depth, interlaced=False, chunks=(), kinds=(0, 1, 2, 3, 4)):
    height, width = samples.shape[:2]
    pixel_bytes = max(1, CHANNELS[kind] * depth // 8)
    passes = [samples[y0::dy, x0::dx] for x0, y0, dx, dy in ADAM7] if interlaced else [samples]
    data = b"".join(
        filtered(packed(part, depth), pixel_bytes, itertools.cycle(kinds)) for part in passes if part.size
    )
    data = zlib.compress(data)
    header = struct.pack(">IIBBBBB", width, height, depth, kind, 0, 0, int(interlaced))
    half = len(data) // 2
    return (
        SIGNATURE
        + chunk(b"IHDR", header)
        + b"".join(chunk(name, content) for name, content in chunks)
        + chunk(b"IDAT", data[:half])
        + chunk(b"IDAT", data[half:])
        + chunk(b"IEND", b"")
    )


def palette_of(depth, random):
    return random.integers(0, 256, (1 << depth, 3), np.uint8)


def expected_pixels(samples, kind, depth, palette):
    """What the samples mean: grey of 8 or 16 bits, or colour."""
    if kind == PALETTE:
        return palette[samples[..., 0]]
    colours = samples[..., 0] if kind in (GREY, GREY_ALPHA) else samples[..., :3]
    if depth < 8:
        return (colours * (255 // ((1 << depth) - 1))).astype(np.uint8)
    return colours.astype(f"u{depth // 8}")


def assert_reads(path, expected, command):
    """As Pillow, which keeps the upper byte of colour and of grey with alpha."""
    with Image.open(path) as picture:
        grey = "I" if picture.mode == "I" else "L"
        theirs = np.asarray(picture.convert("RGB" if expected.ndim == 3 else grey))
    is_wide = expected.dtype == np.uint16 and theirs.dtype == np.uint8
    np.testing.assert_array_equal(theirs, expected >> 8 if is_wide else expected)
    image = orva.read(path)
    assert (image.axes, image.pixel_size) == (("y", "x"), {})
    if expected.ndim == 3:
        np.testing.assert_array_equal(image, orva.luminance(expected))
    else:
        np.testing.assert_array_equal(image, expected)
    command("convert", path, path.with_suffix(".tif"))
    kept = tifffile.imread(path.with_suffix(".tif"))
    assert kept.dtype == expected.dtype
    np.testing.assert_array_equal(kept, expected)


@pytest.mark.parametrize("interlaced", [False, True])
@pytest.mark.parametrize("kind, depth", KINDS)
def test_every_kind_is_read(tmp_path, random, command, kind, depth, interlaced):
    samples = random.integers(0, 1 << depth, (32, 35, CHANNELS[kind]))
    palette = palette_of(depth, random)
    chunks = [(b"PLTE", palette.tobytes())] if kind == PALETTE else []
    path = tmp_path / "a.png"
    path.write_bytes(png(samples, kind, depth, interlaced, chunks))
    assert_reads(path, expected_pixels(samples, kind, depth, palette), command)


@pytest.mark.filterwarnings("ignore:Palette images with Transparency")
@pytest.mark.parametrize("kind, depth", [k for k in KINDS if k[0] in (GREY, COLOUR, PALETTE)])
def test_transparency_leaves_the_pixels(tmp_path, random, command, kind, depth):
    samples = random.integers(0, 1 << depth, (9, 21, CHANNELS[kind]))
    palette = palette_of(depth, random)
    if kind == PALETTE:
        chunks = [(b"PLTE", palette.tobytes()), (b"tRNS", bytes(range(1 << depth)))]
    else:
        chunks = [(b"tRNS", samples[0, 0].astype(">u2").tobytes())]
    path = tmp_path / "a.png"
    path.write_bytes(png(samples, kind, depth, chunks=chunks))
    assert_reads(path, expected_pixels(samples, kind, depth, palette), command)


@pytest.mark.parametrize("size", [(1, 1), (1, 9), (9, 1), (3, 5), (8, 8)])
@pytest.mark.parametrize("kind, depth", [(GREY, 1), (PALETTE, 4), (COLOUR, 16)])
def test_sizes_with_empty_passes(tmp_path, random, command, kind, depth, size):
    samples = random.integers(0, 1 << depth, (*size, CHANNELS[kind]))
    palette = palette_of(depth, random)
    chunks = [(b"PLTE", palette.tobytes())] if kind == PALETTE else []
    path = tmp_path / "a.png"
    path.write_bytes(png(samples, kind, depth, True, chunks))
    assert_reads(path, expected_pixels(samples, kind, depth, palette), command)


@pytest.mark.parametrize("filters", [(0,), (1,), (2,), (3,), (4,)])
@pytest.mark.parametrize("kind, depth", [(GREY, 2), (GREY, 16), (COLOUR, 8), (COLOUR_ALPHA, 16)])
def test_every_filter_is_undone(tmp_path, random, command, kind, depth, filters):
    samples = random.integers(0, 1 << depth, (6, 11, CHANNELS[kind]))
    path = tmp_path / "a.png"
    path.write_bytes(png(samples, kind, depth, kinds=filters))
    assert_reads(path, expected_pixels(samples, kind, depth, None), command)


@pytest.mark.parametrize("name", [b"gAMA", b"pHYs", b"sBIT", b"bKGD", b"tEXt"])
def test_what_describes_the_pixels_leaves_them(tmp_path, random, command, name):
    content = {
        b"gAMA": struct.pack(">I", 100000),
        b"pHYs": struct.pack(">IIB", 4000000, 4000000, 1),
        b"sBIT": bytes([5]),
        b"bKGD": struct.pack(">H", 3),
        b"tEXt": b"Title\0a",
    }[name]
    samples = random.integers(0, 256, (6, 11, 1))
    path = tmp_path / "a.png"
    path.write_bytes(png(samples, GREY, 8, chunks=[(name, content)]))
    assert_reads(path, samples[..., 0].astype(np.uint8), command)


@pytest.mark.parametrize("at", [8 + 8 + 3, 60, -30])
def test_damage_is_an_error(tmp_path, random, at):
    content = bytearray(png(random.integers(0, 256, (6, 11, 1)), GREY, 8))
    content[at] ^= 0x55
    (tmp_path / "a.png").write_bytes(content)
    with pytest.raises(OSError, match=r"a\.png: is a damaged PNG file: "):
        orva.read(tmp_path / "a.png")
