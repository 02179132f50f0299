"""Which types of events say what is wrong for each kind of damage. The one place where that is decided.

`FINDS`: an event of any of these types counts as found. `EXCUSED`: types that a damage brings with it or that are true
as well, so that they are no false events in its file, wherever they lie. Types that are in neither, and those that
this table has never heard of, are false outside the damage.
"""

FINDS = {
    'blackWithLogo': {'black'}, 'blackWithClock': {'black'}, 'blackWithNoise': {'black'},
    'freezeWithClock': {'freeze'}, 'freezeWithNoise': {'freeze'}, 'freezeCoded': {'freeze'},
    'freezeInBursts': {'freeze', 'stutter', 'missing_frames', 'repeated_frames'},
    'letterbox': {'letterbox'}, 'letterboxWithLogo': {'letterbox'}, 'letterboxInTheDark': {'letterbox'},
    'pillarbox': {'pillarbox'}, 'pillarboxWithLogo': {'pillarbox'},
    'combFields': {'combing'}, 'combPulldown': {'combing'}, 'combPart': {'combing'},
    'tear': {'slice', 'tear', 'block_loss'}, 'tearShifted': {'slice', 'tear', 'block_loss'},
    'heldLines': {'slice', 'block_loss'}, 'deadBands': {'slice', 'block_loss'}, 'shiftedBands': {'slice', 'block_loss'},
    'strobe': {'flicker', 'flash'}, 'mainsBands': {'flicker', 'flash'}, 'projector': {'flicker', 'flash'},
    'gainPumping': {'flicker', 'flash'},
    'overExposure': {'over_exposure'}, 'underExposure': {'under_exposure'}, 'haze': {'low_contrast'},
    'blocksOfMpeg2': {'blockiness'}, 'blocksOfX264': {'blockiness'}, 'blocksUpscaled': {'blockiness'},
    'gaussianBlur': {'blur'}, 'defocus': {'blur'}, 'motionBlur': {'blur'}, 'upscaled': {'blur'},
    'sensorNoise': {'noise'}, 'filmGrain': {'noise'}, 'saltAndPepper': {'noise'}, 'analogueNoise': {'noise'},
    'doubledFrames': {'freeze', 'stutter', 'missing_frames', 'repeated_frames'},
    'jumps': {'missing_frames', 'jump'},
    'missingFrames': {'missing_frames', 'timestamp_gap'},
    'lostMpeg2': {'decode_error', 'stream_error', 'block_loss', 'slice'},
    'lostH264': {'decode_error', 'stream_error', 'block_loss', 'slice'},
    'lostConcealed': {'block_loss', 'slice', 'freeze', 'blockiness'},
}

STREAM_TYPES = {'decode_error', 'stream_error'}

EXCUSED = {
    'letterboxInTheDark': {'under_exposure', 'low_contrast', 'black'},  # the whole clip was made a night
    'jumps': {'scene_cut'},
    'lostMpeg2': {'missing_frames', 'timestamp_gap', 'truncation', 'scene_cut', 'freeze', 'starts_midstream'},
    'lostH264': {'missing_frames', 'timestamp_gap', 'truncation', 'scene_cut', 'freeze', 'starts_midstream'},
}


def finds(kind):
    return FINDS.get(kind, set())


def excused(kind):
    return finds(kind) | EXCUSED.get(kind, set())
