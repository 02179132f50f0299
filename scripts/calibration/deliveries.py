"""How a made clip reaches the analyser. `coded`: ffmpeg's options and the file's extension."""


def coded(delivery, size, fps):
    # A sane rate for MPEG-2: 6 Mb/s for standard definition at 25 frames a second, in proportion.
    rate = int(size[0] * size[1] * fps * 0.58)
    if delivery == 'mpeg2':
        return (['-c:v', 'mpeg2video', '-b:v', rate, '-maxrate', rate * 3 // 2, '-bufsize', rate, '-bf', 2, '-g', 15,
                 '-f', 'mpegts'], 'ts')
    if delivery == 'x265':
        return (['-c:v', 'libx265', '-preset', 'superfast', '-crf', 27, '-x265-params',
                 'log-level=error:pools=none:frame-threads=1'], 'mkv')
    return (['-c:v', 'libx264', '-preset', 'veryfast', '-crf', {'x264-20': 20, 'x264-30': 30}[delivery], '-g',
             int(2 * fps)], 'mp4' if delivery == 'x264-20' else 'mkv')


DELIVERIES = ('x264-20', 'x264-30', 'x265', 'mpeg2')
