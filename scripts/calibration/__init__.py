"""The corpus by which lumascan's thresholds are chosen and judged: docs/thresholds.md.

sources      photographs and films, and which half each belongs to
films        films in memory, from and to ffmpeg
shooting     a camera's moves, noise and curves
clean        clean material made of these
damages      what is done to films
streams      what is done to coded streams
deliveries   how clips are coded at last
making       the list of all files, each made once
measuring    lumascan's results of them; corpus() gives both together
matching     which events count for which damage
judging      tables
peers        FFmpeg's detectors, counted in the same way
"""
