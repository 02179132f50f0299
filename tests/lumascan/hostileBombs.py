"""Makers of bombs: small files that ask for more memory, time or room than there is.

All are written by hand, byte by byte: no encoder writes such files. Every run has the same.
"""

import struct
import zlib

HUGE = 65535
# The largest side of a square that FFmpeg takes for a picture, and does not refuse at once.
LARGEST = 16240
MOST32 = 2 ** 32 - 1
SAMPLES = 80_000_000  # an entry of FFmpeg's index for each of them takes 24 bytes


def zeros(count):
    """`count` MiB of zeros as zlib packs them: a thousandth of that."""
    packer = zlib.compressobj(9)
    first = packer.compress(bytes(1 << 20)) + packer.flush(zlib.Z_FULL_FLUSH)
    again = packer.compress(bytes(1 << 20)) + packer.flush(zlib.Z_FULL_FLUSH)
    sum32 = ((count << 20) % 65521) << 16 | 1
    return first + again * (count - 1) + b"\x03\0" + struct.pack(">I", sum32)


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def bmp(width, height, packing):
    head = struct.pack("<IIIIiiHHI20x", MOST32, 0, 54, 40, width, height, 1, 8 if packing else 24, packing)
    return b"BM" + head + bytes(999)


def psd(width, height):
    return b"8BPS\0\1" + bytes(6) + struct.pack(">HIIHH", 3, height, width, 8, 3) + bytes(12) + b"\0\1" + bytes(999)


def dpx(width, height):
    return b"SDPX" + struct.pack(">I764xII20x", 2048, width, height) + b"\x32\0\0\x10" + bytes(3000)


def png(width, height, *chunks, depth=8, colours=6):
    header = chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, colours, 0, 0, 0))
    return b"\x89PNG\r\n\x1a\n" + header + b"".join(chunks) + chunk(b"IEND", b"")


def gif(width, height, frames):
    picture = b"\x21\xf9\x04\0\x04\0\0\0" + b"\x2c" + struct.pack("<HHHHB", 0, 0, 1, 1, 0) + b"\x02\x02\x44\x01\0"
    head = struct.pack("<HHBBB", width, height, 0x80, 0, 0) + b"\0\0\0\xff\xff\xff"
    return b"GIF89a" + head + picture * frames + b";"


def tiff(width, height):
    tags = {256: width, 257: height, 258: 8, 259: 8, 262: 1, 273: 200, 277: 1, 278: height, 279: 4096}
    table = b"".join(struct.pack("<HHII", tag, 4, 1, value) for tag, value in tags.items())
    return (struct.pack("<2sHIH", b"II", 42, 8, len(tags)) + table).ljust(200, b"\0") + zeros(4)


def jpeg(width, height, kind):
    frame = struct.pack(">BHHB", 8, height, width, 3) + bytes([1, 0x22, 0, 2, 0x11, 0, 3, 0x11, 0])
    quantities = b"\xff\xdb" + struct.pack(">HB", 67, 0) + b"\1" * 64
    codes = b"".join(b"\xff\xc4" + struct.pack(">HB", 20, table) + b"\1" + bytes(15) + b"\0" for table in (0, 16))
    scan = b"\xff\xda" + struct.pack(">HB", 12, 3) + bytes([1, 0, 2, 0, 3, 0, 0, 0 if kind == 2 else 63, 0])
    head = b"\xff\xd8" + quantities + b"\xff" + bytes([0xc0 + kind]) + struct.pack(">H", 2 + len(frame)) + frame
    return head + codes + (scan + bytes(2000)) * 20 + b"\xff\xd9"


def jpeg2000(width, height, tile):
    size = struct.pack(">HIIIIIIIIH", 0, width, height, 0, 0, tile, tile, 0, 0, 3) + b"\x07\x01\x01" * 3
    style = b"\xff\x52\0\x0c\0\0\0\x01\0\x05\x04\x04\0\x01" + b"\xff\x5c\0\x13\x40" + b"\x48" * 16
    part = b"\xff\x90\0\x0a\0\0\0\0\0\0\0\x01\xff\x93" + bytes(99)
    return b"\xff\x4f\xff\x51" + struct.pack(">H", 2 + len(size)) + size + style + part


def exr(width, height):
    def attribute(name, kind, value):
        return name + b"\0" + kind + b"\0" + struct.pack("<I", len(value)) + value
    window = struct.pack("<iiii", 0, 0, width - 1, height - 1)
    channels = attribute(b"channels", b"chlist", b"Y\0" + struct.pack("<IIII", 1, 0, 1, 1) + b"\0")
    windows = attribute(b"dataWindow", b"box2i", window) + attribute(b"displayWindow", b"box2i", window)
    rest = attribute(b"compression", b"compression", b"\3") + attribute(b"lineOrder", b"lineOrder", b"\0")
    shape = attribute(b"pixelAspectRatio", b"float", struct.pack("<f", 1))
    return b"\x76\x2f\x31\x01\x02\0\0\0" + channels + windows + rest + shape + b"\0" + bytes(4000)


class Bits:
    """Writes fields of bits, and numbers as H.264 and HEVC code them (Exp-Golomb)."""

    def __init__(self):
        self.text = ""

    def put(self, width, value):
        self.text += format(value, f"0{width}b")
        return self

    def golomb(self, *values):
        for value in values:
            self.text += format(value + 1, "b").zfill(2 * (value + 1).bit_length() - 1)
        return self

    def data(self):
        text = self.text + "0" * (-len(self.text) % 8)
        return int(text, 2).to_bytes(len(text) // 8, "big")

    def unit(self, *header):
        """Behind a start code, and with none in it."""
        data = bytes(header) + self.put(1, 1).data()
        return b"\0\0\0\1" + data.replace(b"\0\0", b"\0\0\3")


def h264(blocks, pictures):
    sps = Bits().put(24, 0x640040).golomb(0, 1, 0, 0).put(2, 0).golomb(0, 0, 0, 16).put(1, 0)
    sps.golomb(blocks - 1, blocks - 1).put(4, 0b1100)
    pps = Bits().golomb(0, 0).put(2, 0).golomb(0, 0, 0).put(3, 0).golomb(0, 0, 0).put(3, 0)
    slices = [Bits().golomb(0, 7, 0).put(4, 0).golomb(i % 2).put(6, 0).golomb(0).put(8000, 2 ** 8000 - 1).unit(0x65)
              for i in range(pictures)]
    return sps.unit(0x67) + pps.unit(0x68) + b"".join(slices)


def hevc(width, height):
    profile = Bits().put(8, 1).put(32, 0x60000000).put(48, 0x900000000000).put(8, 186).text
    vps, sps = Bits().put(16, 0x0c01).put(16, 0xffff), Bits().put(8, 1)
    for unit in (vps, sps):
        unit.text += profile
    vps.put(1, 1).golomb(15, 15, 0).put(6, 0).golomb(0).put(2, 0)
    sps.golomb(0, 1, width, height).put(1, 0).golomb(0, 0, 4).put(1, 1).golomb(15, 15, 0, 0, 3, 0, 3, 0, 0).put(4, 0)
    sps.golomb(0).put(5, 0)
    pps = Bits().golomb(0, 0).put(7, 0).golomb(0, 0, 0).put(3, 0).golomb(0, 0).put(10, 0).golomb(0).put(2, 0)
    picture = Bits().put(2, 0b10).golomb(0, 2, 0).put(4000, 2 ** 4000 // 3)
    return vps.unit(0x40, 1) + sps.unit(0x42, 1) + pps.unit(0x44, 1) + picture.unit(0x26, 1) * 5


def mpeg2(width, height):
    sequence = Bits().put(12, width & 4095).put(12, height & 4095).put(8, 0x15).put(18, 2 ** 18 - 1).put(14, 2 ** 13)
    more = Bits().put(15, 0x148a >> 1).put(2, width >> 12).put(2, height >> 12).put(12, 0).put(16, 2 ** 15).put(1, 0)
    picture = b"\0\0\1\0\0\x0f\xff\xf8\0\0\1\xb5\x8f\xff\xf3\x41\x80\0\0\1\1\x0b" + bytes([0xff] * 99)
    return b"\0\0\1\xb3" + sequence.data() + b"\0\0\1\xb5" + more.data() + picture * 10


def box(kind, *parts):
    payload = b"".join(parts)
    return struct.pack(">I4s", 8 + len(payload), kind) + payload


def numbers(*values):
    return struct.pack(f">{len(values)}I", *values)


def track(width, height, tables=None, scale=25, duration=1):
    """A QuickTime track of raw pictures with tables that say what they like."""
    entry = box(b"raw ", bytes(7), b"\1", bytes(16), struct.pack(">HH", width, height), bytes(46), b"\0\x18\xff\xff")
    usual = {b"stts": numbers(0, 1, 1, 1), b"stsc": numbers(0, 1, 1, 1, 1), b"stsz": numbers(0, 0, 1, 9)}
    all_ = {**usual, b"stco": numbers(0, 1, 40), **(tables or {})}
    table = box(b"stbl", box(b"stsd", numbers(0, 1), entry), *(box(*item) for item in all_.items()))
    media = box(b"mdhd", struct.pack(">IQQIQI", 1 << 24, 0, 0, scale, duration, 0))
    handler = box(b"hdlr", numbers(0, 0) + b"vide" + bytes(13))
    here = box(b"dinf", box(b"dref", numbers(0, 1), box(b"url ", numbers(1))))
    information = box(b"minf", box(b"vmhd", bytes(12)), here, table)
    head = box(b"tkhd", numbers(1, 0, 0, 1, 0, 1), bytes(52), numbers(width << 16 & MOST32, height << 16 & MOST32))
    return box(b"trak", head, box(b"mdia", media, handler, information))


def movie(*tracks, rest=b"", duration=1):
    head = box(b"mvhd", struct.pack(">IQQIQ", 1 << 24, 0, 0, 1000, duration), bytes(80))
    return box(b"ftyp", b"isom\0\0\2\0isom") + box(b"mdat", bytes(99)) + box(b"moov", head, *tracks) + rest


def counted(count):
    """Tables in which each of a few entries stands for very many samples."""
    return {b"stts": numbers(0, 1, count, 1), b"stsc": numbers(0, 1, 1, count, 1), b"stsz": numbers(0, 1, count)}


def claimed(count):
    """Tables that claim to have very many entries."""
    tables = {kind: numbers(0, count, 1, 1) for kind in (b"stts", b"ctts", b"stss", b"stco")}
    return {**tables, b"stsz": numbers(0, 0, count, 1)}


def fragmented(count):
    """A fragment of so many samples, none of which takes a byte to describe."""
    extended = box(b"mvex", box(b"trex", numbers(0, 1, 1, 1, 1, 0)))
    run = box(b"traf", box(b"tfhd", numbers(0x20000, 1)), box(b"trun", numbers(0, count)))
    return movie(track(64, 48), extended, rest=box(b"moof", box(b"mfhd", numbers(0, 1)), run))


def nested(kind, depth):
    """One in the other: the length of each is that of all within."""
    return b"".join(struct.pack(">I4s", 8 * (depth - i), kind) for i in range(depth))


def element(number, *parts, size=None):
    """Of Matroska: its length in eight bytes, true or as it is given."""
    payload = b"".join(parts)
    return bytes.fromhex(number) + struct.pack(">Q", 1 << 56 | (len(payload) if size is None else size)) + payload


def whole(number, value):
    return element(number, struct.pack(">Q", value))


def matroskaTrack(number, width, height, *more):
    video = element("e0", whole("b0", width), whole("ba", height))
    facts = whole("d7", number), whole("73c5", number), whole("83", 1), element("86", b"V_VP8")
    return element("ae", *facts, video, *more)


def tracks(*parts):
    return element("1654ae6b", *parts)


def matroska(*parts, duration=1.0, scale=1000000):
    head = element("1a45dfa3", element("4282", b"matroska"), whole("4287", 4))
    information = element("1549a966", whole("2ad7b1", scale), element("4489", struct.pack(">d", duration)))
    cluster = element("1f43b675", whole("e7", 0), element("a3", b"\x81\0\0\x80" + bytes(99)))
    return head + element("18538067", information, *parts, cluster)


def riff(kind, *parts):
    payload = b"".join(parts)
    return struct.pack("<4sI", kind, len(payload)) + payload + bytes(len(payload) % 2)


def avi(width, height, streams=1, rate=25, frames=1):
    head = riff(b"avih", struct.pack("<14I", 1, 0, 0, 16, frames, 0, streams, 0, width, height, 0, 0, 0, 0))
    facts = riff(b"strh", struct.pack("<4s4s10I8x", b"vids", b"DIB ", 0, 0, 0, 1, rate, 0, frames, 0, 0, 0))
    stream = facts + riff(b"strf", struct.pack("<IiiHH6I", 40, width, height, 1, 24, 0, 0, 0, 0, 0, 0))
    head = riff(b"LIST", b"hdrl", head, riff(b"LIST", b"strl", stream) * streams)
    return riff(b"RIFF", b"AVI ", head, riff(b"LIST", b"movi", riff(b"00db", bytes(98))))


def oggPages(count):
    """A page of each of so many streams: all begin, none goes on."""
    head = b"\x80theora\3\2\1" + struct.pack(">HH", 4, 3) + bytes(32)
    pages = (b"OggS\0\2" + struct.pack("<QIII", 0, i, 0, 0) + bytes([1, len(head)]) + head for i in range(count))
    return b"".join(pages)


def checksum(data):
    """Of a section of a transport stream."""
    rest = MOST32
    for byte in data:
        rest ^= byte << 24
        for _ in range(8):
            rest = (rest << 1 ^ (0x104c11db7 if rest >> 31 else 0)) & MOST32
    return struct.pack(">I", rest)


def section(packets, kind, number, payload):
    body = struct.pack(">BHHBBB", kind, 0xb000 | 9 + len(payload), number, 0xc1, 0, 0) + payload
    data = b"\0" + body + checksum(body)
    starts = range(0, len(data), 184)
    heads = [struct.pack(">BHB", 0x47, packets | (0x4000 if i == 0 else 0), 0x10 | i // 184 & 15) for i in starts]
    return b"".join(head + data[i:i + 184].ljust(184, b"\xff") for head, i in zip(heads, starts))


def transport(programs, streams=190):
    """As many programs of as many video streams each."""
    parts = [section(0, 0, 1, b"".join(struct.pack(">HH", 1 + i, 0xe100 + i) for i in range(programs)))]
    for i in range(programs):
        listed = [struct.pack(">BHH", 0x1b, 0xe200 + (i * streams + j) % 7600, 0xf000) for j in range(streams)]
        parts.append(section(0x100 + i, 2, 1 + i, struct.pack(">HH", 0xe200, 0xf000) + b"".join(listed)))
    return b"".join(parts)


def flv(width, height, duration):
    def value(name, number):
        return struct.pack(">H", len(name)) + name + b"\0" + struct.pack(">d", number)
    values = value(b"width", width) + value(b"height", height) + value(b"duration", duration) + value(b"framerate", 1e9)
    facts = b"\2\0\x0aonMetaData\x08" + struct.pack(">I", 4) + values + b"\0\0\x09"
    # Sorenson's H.263: its header says the size, too.
    picture = b"\x22\0\0\x84\0\x7f\xff\xbf\xff\xc0" + bytes(99)
    tags = [bytes([kind]) + struct.pack(">I", len(data))[1:] + bytes(7) + data + struct.pack(">I", 11 + len(data))
            for kind, data in ((18, facts), (9, picture))]
    return b"FLV\1\1\0\0\0\x09\0\0\0\0" + b"".join(tags)


def ivf(codec, width, height, frame, count=8):
    head = struct.pack("<4sHH4sHHIIII", b"DKIF", 0, 32, codec, width & HUGE, height & HUGE, 1000000000, 1, MOST32, 0)
    return head + b"".join(struct.pack("<IQ", len(frame), i) + frame for i in range(count))


def vp8(width, height):
    return b"\x10\x02\0\x9d\x01\x2a" + struct.pack("<HH", width, height) + bytes(60)


def vp9(width, height):
    return Bits().put(8, 0x82).put(24, 0x498342).put(4, 0).put(16, width - 1).put(16, height - 1).put(200, 0).data()


def webp(width, height):
    return riff(b"RIFF", b"WEBP", riff(b"VP8L", b"\x2f" + struct.pack("<I", height - 1 << 14 | width - 1) + bytes(40)))


def bombs():
    """Names and bytes. The first seven are a sample."""
    yield "gifLargest.gif", gif(HUGE, HUGE, 9)
    yield "mp4Fragment.mp4", fragmented(100_000_000)
    yield "mkvTracks.mkv", matroska(tracks(*(matroskaTrack(i + 1, 64, 48) for i in range(100_000))))
    yield "y4mLargest.y4m", b"YUV4MPEG2 W2147483647 H2147483647 F1000000000:1\nFRAME\n" + bytes(999)
    yield "mp4Nested.mp4", box(b"ftyp", b"isom\0\0\2\0isom") + nested(b"moov", 100_000)
    yield "bmpLarge.bmp", bmp(LARGEST, LARGEST, 1)
    yield "tsStreams.ts", transport(40)
    # Pictures.
    idat = chunk(b"IDAT", zeros(1000))
    yield "gifLarge.gif", gif(8000, 8000, 20)
    yield "gifLarger.gif", gif(LARGEST, LARGEST, 9)
    yield "gifMany.gif", gif(2000, 2000, 300)
    yield "pngLargest.png", png(2 ** 31 - 1, 2 ** 31 - 1)
    yield "pngWide.png", png(2 ** 31 - 1, 1, idat)
    yield "pngLarge.png", png(LARGEST, LARGEST, idat, depth=16)
    yield "pngMany.apng", png(LARGEST, LARGEST, chunk(b"acTL", numbers(MOST32 >> 1, 0)), chunk(
        b"fcTL", numbers(0, LARGEST, LARGEST, 0, 0) + b"\0\1\x9a\0\0\0"), idat)
    yield "pngProfile.png", png(64, 48, chunk(b"iCCP", b"a\0\0" + zeros(3000)), chunk(b"IDAT", zeros(1)))
    yield "bmpLargest.bmp", bmp(2 ** 31 - 1, 2 ** 31 - 1, 0)
    yield "tiffLargest.tiff", tiff(2 ** 31 - 1, 2 ** 31 - 1)
    yield "tiffLarge.tiff", tiff(LARGEST, LARGEST)
    yield "webpLargest.webp", webp(16384, 16384)
    yield "webpLarge.webp", webp(LARGEST, LARGEST)
    yield "jpegLarge.jpg", jpeg(LARGEST, LARGEST, 0)
    yield "jpegSteps.jpg", jpeg(LARGEST, LARGEST, 2)
    yield "jpegLargest.mjpeg", jpeg(65500, 65500, 2) * 20
    yield "jpeg2000Largest.j2k", jpeg2000(MOST32, MOST32, 1)
    yield "jpeg2000Large.j2k", jpeg2000(LARGEST, LARGEST, LARGEST)
    yield "jpeg2000Tiles.j2k", jpeg2000(LARGEST, LARGEST, 64)
    yield "exrLargest.exr", exr(2 ** 31 - 1, 2 ** 31 - 1)
    yield "exrLarge.exr", exr(LARGEST, LARGEST)
    yield "psdLarge.psd", psd(LARGEST, LARGEST)
    yield "dpxLarge.dpx", dpx(LARGEST, LARGEST)
    yield "pnmLargest.ppm", b"P6\n2147483647 2147483647\n255\n" + bytes(999)
    yield "pnmLarge.pgm", b"P5\n%d %d\n65535\n" % (LARGEST, LARGEST) + bytes(999)
    yield "pngText.png", png(64, 48, chunk(b"zTXt", b"a\0\0" + zeros(3000)), chunk(b"IDAT", zeros(1)))
    # Streams.
    yield "h264Largest.h264", h264(LARGEST // 16, 12)
    yield "hevcLargest.hevc", hevc(2 ** 31 - 8, 2 ** 31 - 8)
    yield "hevcLarge.hevc", hevc(LARGEST, LARGEST)
    yield "h264TooLarge.h264", h264(2 ** 20, 5)
    yield "mpeg2Largest.m2v", mpeg2(16383, 16383)
    yield "vp8Largest.ivf", ivf(b"VP80", 16383, 16383, vp8(16383, 16383))
    yield "vp9Largest.ivf", ivf(b"VP90", HUGE, HUGE, vp9(HUGE + 1, HUGE + 1))
    yield "vp9Large.ivf", ivf(b"VP90", LARGEST, LARGEST, vp9(LARGEST, LARGEST))
    # Containers.
    yield "y4mLarge.y4m", b"YUV4MPEG2 W%d H%d F1000000000:1\nFRAME\n" % (LARGEST, LARGEST) + bytes(9999)
    yield "y4mRate.y4m", b"YUV4MPEG2 W64 H48 F1000000000:1\n" + (b"FRAME\n" + bytes(64 * 48 * 3 // 2)) * 50
    yield "aviLargest.avi", avi(2 ** 31 - 1, 2 ** 31 - 1, rate=1000000000, frames=MOST32)
    yield "aviLarge.avi", avi(LARGEST, LARGEST, rate=1000000000, frames=MOST32)
    yield "aviStreams.avi", avi(64, 48, streams=100_000)
    yield "mp4Largest.mov", movie(track(HUGE, HUGE, scale=MOST32, duration=2 ** 63), duration=2 ** 63)
    yield "mp4Constant.mov", movie(track(64, 48, counted(SAMPLES)))
    yield "mp4Counts.mov", movie(track(64, 48, counted(MOST32)))
    yield "mp4Claims.mov", movie(track(64, 48, claimed(MOST32)))
    yield "mp4Claims100M.mov", movie(track(64, 48, claimed(100_000_000)))
    yield "mp4Tracks.mp4", movie(*[track(64, 48)] * 20_000)
    largest = matroskaTrack(1, 2 ** 62, 2 ** 62)
    yield "mkvLargest.mkv", matroska(tracks(largest), duration=2.0 ** 63, scale=2 ** 63)
    yield "mkvLarge.mkv", matroska(tracks(matroskaTrack(1, LARGEST, LARGEST, whole("23e383", 1))), duration=1e308)
    private = matroskaTrack(1, 64, 48, element("63a2", size=2 ** 31 - 2))
    yield "mkvElements.mkv", matroska(tracks(private), element("ec", size=2 ** 56 - 2))
    tags = b"".join(element("67c8", size=10 * (100_000 - i)) for i in range(100_000))
    yield "mkvNested.mkv", matroska(tracks(matroskaTrack(1, 64, 48)), element("1254c367", element("7373", tags)))
    yield "oggStreams.ogv", oggPages(20_000)
    yield "flvLargest.flv", flv(1e308, 1e308, 2.0 ** 63)
    yield "nutLargest.nut", b"nut/multimedia container\0NM\x7a\x56\x1f\x5f\x04\xad" + b"\xff" * 9 + b"\x7f" + bytes(99)
