"""Makers of names that may do harm, and of files that name other files."""

import base64
import itertools
import struct

LONGEST = 255  # bytes of a name, for most file systems
WRITTEN = ["run.json", "index.html", "events.csv", "summary.csv", "result.json", "report.html", "frames.csv",
           "rows.tsv", "thumbs", "stdin", ".lumascan-lock", ".run.json.lumascan-vm-1-2.part", ".x.lumascan-a-9-0.part"]
ODD = [b"new\nline", b"\n", b"carriage\rreturn", b"tab\tstop", b"-", b"--", b"-o", b"--force", b"-n", b"--output=x",
       b"-rf", b"...", b"....", b". .", b" ", b"  ", b" lead", b"trail ", b" both ", b"\xc2\xa0", b"\xe2\x80\x83",
       b"%d", b"%03d.png", b"%s%n", b"%41", b"%2e%2e%2f", b"a%d.jpg", b"*", b"?", b"[a-z]", b"{a,b}", b"a*.mp4",
       b"concat:a|b", b"concat:x", b"http:x", b"file:x", b"pipe:0", b"data:video,x", b"subfile,,start,0,end,9,,:x",
       b"crypto:x", b"cache:x", b"async:x", b"tee:x", b"http%3A%2F%2Fx", b"rtsp:x", b"sdp", b"|", b"| id", b"; id",
       b"& id", b"$(id)", b"`id`", b"${HOME}", b"~", b"~root", b"!!", b"#", b"a#b?c=d&e", b"'", b'"', b"\\", b"\\n",
       b"a\\x1bb", b"'; id; '", b"<img src=x onerror=hostile()>", b"<script>hostile()", b"&lt;&amp;", b"<!--", b"]]>",
       b"=1+1", b"@SUM(A1)", b"+1", b"a,b", b'"a","b"', b"a;b", b"\xff\xfe", b"caf\xe9", b"\xc3", b"\xe2\x82",
       b"\xf0\x9f\x98", b"\xc0\xaf", b"\xed\xa0\x80", b"\xf4\x90\x80\x80", b"\x80\x81", "\ufeffbom".encode(),
       "e\u0301".encode(), "\u00e9".encode(), "\U0001f600".encode(), "zero\u200bwidth".encode(), "CON".encode(),
       b"NUL.mp4", b"x.lumascan", b".x.lumascan", b"a.mp4.lumascan", b"a.mp4.lumascan~", b"run.json~", b"x.part",
       b".hidden", b"._film.mp4", b"null", b"0", b"-1", b"1e999", b"true", b"__proto__", b"constructor", b"a.mp4.",
       b"a..mp4", b"a.MP4", b"a.y4m", b"a.ts"]
BIDI = "\u061c\u200e\u200f\u202a\u202b\u202c\u202d\u202e\u2066\u2067\u2068\u2069"
SEPARATORS = "\u2028\u2029"


def longNames():
    """As long as a name may be, and a little shorter; characters of several bytes, some of them cut in the middle."""
    for length in (200, 235, 236, 237, 245, 246, 247, 254, LONGEST):
        yield b"n" * length
    for character, length in itertools.product(("\u00e9", "\u20ac", "\U0001f600"), (236, 246, 247, 250, LONGEST)):
        yield (character.encode() * LONGEST)[:length]
    yield from (b"m" * (LONGEST - 1) + end for end in (b"1", b"2"))  # cut in the same way
    yield from (b"\n" * LONGEST, b"\x1b" * LONGEST, b"%" * LONGEST, b"." * LONGEST, b" " * LONGEST, b"-" * LONGEST)


def names():
    """Paths of 300 files, each once; of every kind one in turn, so that the first ones are a sample."""
    controls = [b"c%c1" % byte for byte in [*range(1, 32), 127] if byte not in b"\t\n\r"]
    c1 = [f"d{chr(code)}[31m".encode() for code in range(0x80, 0xa0)]
    turned = [f"gpj{character}4pm".encode() for character in BIDI + SEPARATORS]
    written = [b"f/" + name.encode() for name in WRITTEN]
    inFolders = [name.encode() + b"/" + name.encode() for name in WRITTEN]
    # The results of the first would go where those of the folder index.html go.
    asFolders = [b"index.html~/index.html", b"d/x.lumascan /a", b"d/\n/a", b"d/\x1b[2J/a", b"d/-r/a"]
    # Where the results of n/x go, files and folders of the names that are written there.
    nested = [b"n/x", *(b"n/x.lumascan/" + name.encode() for name in WRITTEN), b"o/x", b"o/x.lumascan/events.csv/a"]
    escapes = [b"\x1b[2J", b"\x1b]0;t\x07", b"\x9b2J", b"\xc2\x9b2J", b"\x1bP+q\x1b\\", b"\x08\x08\x08", b"\x0e\x0f"]
    kinds = [ODD, longNames(), controls, c1, turned, escapes, written, inFolders, asFolders, nested]
    mixed = [name for row in itertools.zip_longest(*kinds) for name in row if name is not None]
    dressed = [name + end for end in (b".mp4", b".avi", b".png") for name in ODD]
    return list(dict.fromkeys(mixed + dressed))[:300]


def box(kind, *parts):
    payload = b"".join(parts)
    return struct.pack(">I4s", 8 + len(payload), kind) + payload


def boxes(data):
    """Kind and payload of each box in `data`."""
    place = 0
    while place + 8 <= len(data):
        size, kind = struct.unpack_from(">I4s", data, place)
        yield kind, data[place + 8:place + size]
        place += size


def aliasRecord(path):
    """As a QuickTime movie names the file in which its samples are: a Macintosh alias, by an absolute path, or as many
    folders up and down."""
    levels = 0 if path.startswith(b"/") else 2
    name = path.rsplit(b"/", 1)[-1][:63]
    record = struct.pack(">4sHHHB27sI2sHIB63sI", b"", 0, 2, 0, 4, b"disk", 0, b"H+", 0, 0, len(name), name, 0)
    record += bytes(12) + struct.pack(">hhI12x", levels, levels, 0)
    for kind, text in ((2, b"disk" + path.replace(b"/", b":")), (18, path)):
        record += struct.pack(">HH", kind, len(text)) + text + bytes(len(text) % 2)
    return record + b"\xff\xff\0\0"


def outsourced(movie, target, isAlias):
    """A movie whose samples are said to lie in another file; its own are zeros, at the same places."""
    entry = box(b"alis", bytes(4), aliasRecord(target)) if isAlias else box(b"url ", bytes(4), target + b"\0")

    def changed(kind, payload):
        if kind == b"dref":
            return box(kind, bytes(4), struct.pack(">I", 1), entry)
        if kind == b"mdat":
            return box(kind, bytes(len(payload)))
        isFolder = kind in (b"moov", b"trak", b"mdia", b"minf", b"dinf")
        return box(kind, *(changed(*inner) for inner in boxes(payload))) if isFolder else box(kind, payload)

    return b"".join(changed(*outer) for outer in boxes(movie))


HLS = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXT-X-MEDIA-SEQUENCE:0\n#EXTINF:2,\n{0}\n"
DASH = """<?xml version="1.0"?>
<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" profiles="urn:{profile}" type="{type}" mediaPresentationDuration="PT2S"
 availabilityStartTime="2020-01-01T00:00:00Z" minBufferTime="PT1S"><Period><AdaptationSet mimeType="video/mp4">
<Representation id="1" bandwidth="1000" codecs="avc1.64001e" width="64" height="48"><BaseURL>{target}</BaseURL>
<SegmentBase indexRange="0-99"><Initialization range="0-99"/></SegmentBase></Representation>
</AdaptationSet></Period></MPD>
"""
SDP = """v=0
o=- 0 0 IN IP4 127.0.0.1
s={0}
c=IN IP4 127.0.0.1
t=0 0
a=control:{0}
m=video {1} RTP/AVP 96
a=rtpmap:96 H264/90000
"""
CPL = """<?xml version="1.0"?>
<CompositionPlaylist xmlns="http://www.smpte-ra.org/schemas/2067-3/2016"><Id>urn:uuid:0</Id><EditRate>25 1</EditRate>
<SegmentList><Segment><SequenceList><MainImageSequence><ResourceList><Resource><TrackFileId>{0}</TrackFileId>
<Path>{0}</Path></Resource></ResourceList></MainImageSequence></SequenceList></Segment></SegmentList>
</CompositionPlaylist>
"""
SVG = """<?xml version="1.0"?>
<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width="64" height="48">
<image xlink:href="{0}" href="{0}" width="64" height="48"/></svg>
"""


def listed(kind, target, port):
    """The texts that name another file, with the extensions that they have."""
    location = f"<trackList><track><location>{target}</location></track></trackList>"
    dash = {"profile": "mpeg:dash:profile:isoff-on-demand:2011", "type": "static", "target": target}
    return {
        "hls": ("m3u8", HLS.format(target) + "#EXT-X-ENDLIST\n"),
        "hlsLive": ("m3u8", HLS.replace("#EXTINF", '#EXT-X-MAP:URI="{0}"\n#EXTINF').format(target)),
        "hlsKey": ("ts", HLS.replace("#EXTINF", '#EXT-X-KEY:METHOD=AES-128,URI="{0}"\n#EXTINF').format(target)),
        "dash": ("mpd", DASH.format(**dash)),
        "dashLive": ("mpd", DASH.format(**{**dash, "type": "dynamic"})),
        "dashWebm": ("webm", DASH.format(**{**dash, "profile": "webm:dash:profile:webm-on-demand:2012"})),
        "ffconcat": ("ffconcat", f"ffconcat version 1.0\nfile '{target}'\n"),
        "sdp": ("sdp", SDP.format(target, port)),
        "m3u": ("m3u", f"{target}\n"),
        "pls": ("pls", f"[playlist]\nFile1={target}\nNumberOfEntries=1\n"),
        "asx": ("asx", f'<asx version="3.0"><entry><ref href="{target}"/></entry></asx>\n'),
        "smil": ("smil", f'<smil><body><video src="{target}"/></body></smil>\n'),
        "xspf": ("xspf", f'<playlist version="1" xmlns="http://xspf.org/ns/0/">{location}</playlist>\n'),
        "cue": ("cue", f'FILE "{target}" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n'),
        "imf": ("xml", CPL.format(target)),
        "url": ("url", f"[InternetShortcut]\r\nURL={target}\r\n"),
        "avs": ("avs", f'FFVideoSource("{target}")\n'),
        "vpy": ("vpy", f'import vapoursynth\nvapoursynth.core.ffms2.Source("{target}").set_output()\n'),
        "svg": ("svg", SVG.format(target)),
    }[kind]


LISTS = ["hls", "hlsLive", "hlsKey", "dash", "dashLive", "dashWebm", "ffconcat", "sdp", "m3u", "pls", "asx", "smil",
         "xspf", "cue", "imf", "url", "avs", "vpy", "svg"]
PATTERNS = ["a%d.png", "a%03d.png", "a*.png", "a%d.mp4"]


def manifests(movie, decoy, relative, port):
    """Name and bytes of files that name the decoy in four ways, and once without their own extension."""
    targets = [decoy, relative, f"file://{decoy}", f"http://127.0.0.1:{port}/decoy.mp4"]
    others = ["mp4", "mkv", "ts", "avi"]
    for turn, target in enumerate(targets):
        for number, kind in enumerate(LISTS):
            own, text = listed(kind, target, port)
            # Every second one under the name of a video.
            extension = own if (turn + number) % 2 == 0 else others[(turn + number) // 2 % len(others)]
            yield f"{kind}{turn}.{extension}", text.encode()
        yield f"movieAlias{turn}.mov", outsourced(movie, target.encode(), True)
        yield f"movieUrl{turn}.mp4", outsourced(movie, target.encode(), False)
        texts = [target, f"data:video/mp4;base64,{base64.b64encode(movie).decode()}", movie.hex(), f"concat:{target}"]
        yield f"text{turn}.mp4", texts[turn].encode()
