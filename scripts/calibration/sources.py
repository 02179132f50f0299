"""The photographs and films of Debian's packages that everything is made of, and which half each belongs to.

A source is in one half only, and so is all that shows the same thing or comes from the same camera: `choose` is what
levels are chosen by, `verify` what they are tried on. scripts/setup.sh's group `long` installs the packages.
"""
import pathlib

SHARE = pathlib.Path('/usr/share')
OPENCV = SHARE / 'doc/opencv-doc/examples'
IMAGEIO = pathlib.Path('/usr/lib/python3/dist-packages/imageio/resources/images')
MATE = SHARE / 'backgrounds/mate'
PUZZLES = SHARE / 'palapeli/collection'
BACKSTRETCH = SHARE / 'doc/libjs-jquery-backstretch/examples'
SLIDES = SHARE / 'doc/libjs-jquery-slides/examples/Standard/img'
LABELME = SHARE / 'doc/labelme-examples/examples'
VISP = SHARE / 'visp-images-data/ViSP-images'
EYELINK = SHARE / 'psychtoolbox-3/PsychHardware/EyelinkToolbox/EyelinkDemos/SR-ResearchDemo'
HELP = SHARE / 'help/C'
MECAVIDEO = SHARE / 'pymecavideo/data/video'
LEBINIOU = SHARE / 'lebiniou/vue/media'
BLUPI = SHARE / 'planetblupi/movie'

# Name: (half, file).
PHOTOS = {
    'greenMeadow': ('choose', MATE / 'nature/GreenMeadow.jpg'),
    'ladyBird': ('choose', MATE / 'nature/LadyBird.jpg'),
    'wood': ('choose', MATE / 'nature/Wood.jpg'),
    'storm': ('choose', MATE / 'nature/Storm.jpg'),
    'garden': ('choose', MATE / 'nature/Garden.jpg'),
    'yellowFlower': ('choose', MATE / 'nature/YellowFlower.jpg'),
    'dune': ('choose', MATE / 'nature/Dune.jpg'),
    'castle': ('choose', PUZZLES / 'castle-maintenon.jpg'),
    'bridge': ('choose', PUZZLES / 'cincinnati-bridge.jpg'),
    'coffee': ('choose', BACKSTRETCH / 'coffee.jpg'),
    'drops': ('choose', BACKSTRETCH / 'sample1_1920.jpg'),
    'maple': ('choose', SLIDES / 'slide-1.jpg'),
    'driver': ('choose', SLIDES / 'slide-2.jpg'),
    'windscreen': ('choose', SLIDES / 'slide-3.jpg'),
    'twigs': ('choose', SLIDES / 'slide-4.jpg'),
    'sea': ('choose', SLIDES / 'slide-5.jpg'),
    'bench': ('choose', SLIDES / 'slide-7.jpg'),
    'asters': ('choose', SHARE / 'libjxl-testdata/jxl/flower/flower.png'),
    'town': ('choose', EYELINK / 'town.jpg'),
    'parkingSign': ('choose', OPENCV / 'text/scenetext01.jpg'),
    'shop': ('choose', OPENCV / 'text/scenetext06.jpg'),
    'robin': ('choose', OPENCV / 'hfs/data/000.jpg'),
    'building': ('choose', OPENCV / 'data/building.jpg'),
    'fruits': ('choose', OPENCV / 'data/fruits.jpg'),
    'baboon': ('choose', OPENCV / 'data/baboon.jpg'),
    'astronaut': ('choose', IMAGEIO / 'astronaut.png'),
    'board': ('choose', OPENCV / 'data/board.jpg'),
    'aqua': ('verify', MATE / 'nature/Aqua.jpg'),
    'rainDrops': ('verify', MATE / 'nature/RainDrops.jpg'),
    'twoWings': ('verify', MATE / 'nature/TwoWings.jpg'),
    'freshFlower': ('verify', MATE / 'nature/FreshFlower.jpg'),
    'blinds': ('verify', MATE / 'nature/Blinds.jpg'),
    'elephants': ('verify', MATE / 'abstract/Elephants.jpg'),
    'citrus': ('verify', PUZZLES / 'citrus-fruits.jpg'),
    'bee': ('verify', PUZZLES / 'european-honey-bee.jpg'),
    'chameleon': ('verify', PUZZLES / 'panther-chameleon-female.jpg'),
    'dome': ('verify', BACKSTRETCH / 'dome.jpg'),
    'potHolder': ('verify', BACKSTRETCH / 'pot-holder.jpg'),
    'cliffs': ('verify', BACKSTRETCH / 'sample2_1920.jpg'),
    'branches': ('verify', SHARE / 'gocode/src/github.com/disintegration/imaging/testdata/branches.jpg'),
    'rabbits': ('verify', SHARE / 'psychtoolbox-3/PsychDemos/konijntjes1024x768.jpg'),
    'kitten': ('verify', LABELME / 'classification/data_annotated/0001.jpg'),
    'street': ('verify', LABELME / 'video_annotation/data_annotated/00000100.jpg'),
    'conference': ('verify', VISP / 'faces/1280px-Solvay_conference_1927.png'),
    'aloe': ('verify', OPENCV / 'data/aloeL.jpg'),
    'leuven': ('verify', OPENCV / 'data/leuvenA.jpg'),
    'graffiti': ('verify', OPENCV / 'data/graf1.png'),
    'home': ('verify', OPENCV / 'data/home.jpg'),
    'butterfly': ('verify', OPENCV / 'data/butterfly.jpg'),
    'footballer': ('verify', OPENCV / 'data/messi5.jpg'),
    'squirrel': ('verify', OPENCV / 'data/squirrel_cls.jpg'),
    'plant': ('verify', OPENCV / 'alphamat/input_images/plant.jpg'),
    'container': ('verify', OPENCV / 'text/scenetext04.jpg'),
    'barrier': ('verify', OPENCV / 'text/scenetext05.jpg'),
    'aerial': ('verify', OPENCV / 'data/aero1.jpg'),
}

# Films that damage is done to. Name: (half, file or pattern of numbered pictures, frames of it that are used: first
# and count, size). What is short is shown forwards, backwards and forwards again.
FILMS = {
    'pedestrians': ('choose', OPENCV / 'data/vtest.avi', 0, 300, (480, 360)),
    'pedestriansLater': ('choose', OPENCV / 'data/vtest.avi', 420, 300, (480, 360)),
    'cartoonHero': ('choose', OPENCV / 'data/Megamind.avi', 2, 95, (720, 528)),
    'cockatoo': ('choose', IMAGEIO / 'cockatoo.mp4', 0, 145, (960, 540)),
    'legoArm': ('choose', SHARE / 'doc/python3-hug/examples/streaming_movie_server/movie.mp4', 0, 160, (560, 320)),
    'dots': ('choose', VISP / 'mire-2/image.%04d.pgm', 1, 280, (384, 288)),
    'dotsLater': ('choose', VISP / 'mire-2/image.%04d.pgm', 220, 280, (384, 288)),
    'spaceship': ('choose', SHARE / 'games/fillets-ng/images/menu/intro.mpg', 1500, 280, (640, 480)),
    'tree': ('verify', OPENCV / 'data/tree.avi', 0, 280, (352, 288)),
    'ball': ('verify', MECAVIDEO / 'balle-jbart.mp4', 0, 255, (480, 384)),
    'cubeOnDesk': ('verify', VISP / 'mbt/cube/image%04d.pgm', 0, 217, (640, 480)),
    'licences': ('verify', SHARE / 'openboard/library/videos/wannaworktogether.mp4', 2000, 280, (480, 352)),
}

# Clean files as they came. File: (half, what is truly in it: (type, first frame, last frame)).
ORIGINALS = {
    OPENCV / 'data/vtest.avi': ('choose', []),
    OPENCV / 'data/Megamind.avi': ('choose', [('black', 0, 0), ('scene_cut', 98, 98), ('scene_cut', 154, 154),
                                              ('scene_cut', 200, 200)]),
    IMAGEIO / 'cockatoo.mp4': ('choose', [('blur', 150, 180)]),  # out of focus
    IMAGEIO / 'realshort.mp4': ('choose', []),
    SHARE / 'doc/python3-hug/examples/streaming_movie_server/movie.mp4': ('choose', []),
    SHARE / 'doc/python-nbsphinx/html/www/wikimediacommons/Shepard_Calais_1906_FrenchGP.ogv': ('choose', []),
    SHARE / 'games/fillets-ng/images/menu/intro.mpg': ('choose', [('black', 0, 23), ('black', 2169, 2197)]),
    SHARE / 'hollywood/soundwave.mp4': ('choose', []),
    HELP / 'gnome-mahjongg/figures/hints-video.ogv': ('choose', []),
    HELP / 'gnome-mahjongg/figures/mahjongg-video.ogv': ('choose', []),
    HELP / 'lightsoff/figures/lightsoff.ogv': ('choose', []),
    **{BLUPI / f'{name}.mkv': ('choose', []) for name in (
        'history2', 'play101', 'play103', 'play105', 'play107', 'play108', 'play110', 'play113', 'play116', 'play118',
        'play119', 'play124', 'win005', 'win129')},
    OPENCV / 'data/tree.avi': ('verify', []),
    SHARE / 'openboard/library/videos/wannaworktogether.mp4': ('verify', []),
    SHARE / 'psychtoolbox-3/PsychDemos/MovieDemos/DualDiscs.mov': ('verify', []),
    SHARE / 'gem/examples/data/anim-1.mov': ('verify', []),
    SHARE / 'gem/examples/data/homer.avi': ('verify', []),
    IMAGEIO / 'newtonscradle.gif': ('verify', []),
    HELP / 'gnome-tetravex/figures/gnome-tetravex-video.ogv': ('verify', []),
    HELP / 'five-or-more/figures/glines-demo.ogv': ('verify', []),
    **{MECAVIDEO / name: ('verify', []) for name in (
        'balle-jbart.mp4', 'Effet_force_magnetique.ogv', 'Force_constante.avi', 'Principe_inertie.avi',
        'balle1-vp9.avi', 'g1.avi', 'g2.avi', 'retroMars2018.avi')},
    **{LEBINIOU / f'lebiniou-2021-06-10_12-{time}.mp4': ('verify', []) for time in (
        '17-47', '19-19', '19-53', '23-00', '23-40', '24-29', '27-01', '27-41', '28-28', '32-58', '34-46', '35-23')},
}

# What stands still by its nature: a freeze there is no mistake of the analyser, and no damage either.
STILL = ('soundwave', 'hints-video', 'mahjongg-video', 'lightsoff', 'gnome-tetravex-video', 'glines-demo')


def missingFiles():
    """What scripts/setup.sh has to install yet."""
    single = [path for _, path in PHOTOS.values()] + list(ORIGINALS)
    single += [pathlib.Path(str(path).replace('%04d', '0217')) for _, path, *_ in FILMS.values()]
    return [path for path in single if not path.is_file()]
