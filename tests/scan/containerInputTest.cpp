// What FFmpeg may read: one video file, and nothing that it names.
#include "scan/video/containerInput.h"

#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "clips.h"
#include "openFiles.h"
#include "scan/video/videoReader.h"

namespace fs = std::filesystem;

namespace {

// Sees whether anybody opens a file.
struct Watch {
  explicit Watch(const std::string& path) : descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    EXPECT_GE(inotify_add_watch(descriptor, path.c_str(), IN_OPEN), 0) << path;
  }
  ~Watch() { close(descriptor); }
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  bool hasSeenOne() const {
    char events[4096];
    return read(descriptor, events, sizeof events) > 0;
  }

  int descriptor;
};

// Why a file cannot be opened as a video; empty: it can.
std::string refusalOf(const std::string& path) {
  av_log_set_level(AV_LOG_QUIET);
  VideoReader reader;
  return openVideo({path, 0, 0, ""}, 1, &reader);
}

const char* const playlist = "it is a playlist, no video: name the videos themselves";

}  // namespace

TEST(ContainerInput, refusesPlaylists_andOpensNothingThatTheyName) {
  const TemporaryDirectory directory;
  const std::string secret = directory.path + "/secret.ts";
  makeClip(directory, "secret.ts", {"-c:v", "mpeg2video"});
  const Watch watch(secret);
  EXPECT_EQ(refusalOf(secret), "");
  ASSERT_TRUE(watch.hasSeenOne());
  const std::string segments =
      "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:1\n"
      "#EXTINF:1.0,\n" +
      secret + "\n";
  const std::string manifest =
      "<?xml version=\"1.0\"?>\n<MPD profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\" "
      "xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
      "mediaPresentationDuration=\"PT1S\"><Period><AdaptationSet contentType=\"video\">"
      "<Representation id=\"0\" bandwidth=\"1000\"><BaseURL>" +
      secret + "</BaseURL></Representation></AdaptationSet></Period></MPD>\n";
  for (const char* const name : {"film.mp4", "film.m3u8", "film.mpd", "film.ffconcat", "film"}) {
    const std::string path = directory.path + "/" + name;
    for (const std::string& text : {segments, segments + "#EXT-X-ENDLIST\n", manifest,
                                    "ffconcat version 1.0\nfile '" + secret + "'\n"}) {
      writeFile(path, text);
      EXPECT_EQ(refusalOf(path), playlist) << name << "\n" << text;
    }
    // Session descriptions name addresses.
    writeFile(path,
              "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
              "m=video 5004 RTP/AVP 33\r\n");
    EXPECT_EQ(refusalOf(path), playlist) << name;
  }
  EXPECT_FALSE(watch.hasSeenOne());
}

TEST(ContainerInput, refusesTextsAndSound_andSaysWhatTheyAre) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/notes.nfo", "root:x:0:0:root:/root:/bin/bash\n");
  EXPECT_EQ(refusalOf(directory.path + "/notes.nfo"),
            "there is no video in it, but what FFmpeg calls \"tty\"");
  ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=1", "sound.mp3"});
  EXPECT_EQ(refusalOf(directory.path + "/sound.mp3"),
            "there is no video in it, but what FFmpeg calls \"mp3\"");
  writeFile(directory.path + "/empty.mp4", "");
  EXPECT_EQ(refusalOf(directory.path + "/empty.mp4"), "Invalid data found when processing input");
}

TEST(ContainerInput, knowsNoNames_whateverTheyLookLike) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "mpeg4"});
  for (const char* const name : {"a%d.mp4", "%03d.mp4", "a*.mp4", "a?.mp4", "concat:b.mp4",
                                 "http:b.mp4", "-", "pipe:0", "a\nb.mp4", "\xff.mp4", "no"}) {
    fs::copy(directory.path + "/clip.mp4", directory.path + "/" + name);
    EXPECT_EQ(refusalOf(directory.path + "/" + name), "") << name;
  }
  // The picture of this name, not the first one of a sequence.
  makeClip(directory, "a0.png", {"-frames:v", "1"});
  const Watch watch(directory.path + "/a0.png");
  fs::copy(directory.path + "/clip.mp4", directory.path + "/a%d.png");
  makeClip(directory, "other.png", {"-frames:v", "1", "-s", "64x48"});
  fs::rename(directory.path + "/other.png", directory.path + "/a%d.png");
  VideoReader reader;
  ASSERT_EQ(openVideo({directory.path + "/a%d.png", 0, 0, ""}, 1, &reader), "");
  EXPECT_EQ(videoStream(reader).codecpar->width, 64);
  EXPECT_FALSE(watch.hasSeenOne());
}

TEST(ContainerInput, readsStills) {
  const TemporaryDirectory directory;
  for (const char* const name : {"a.png", "a.jpg", "a.bmp", "a.tiff", "a.webp", "a.ppm", "a.dpx",
                                 "a.gif", "a.jp2", "a.tga"}) {
    makeClip(directory, name, {"-frames:v", "1"});
    // Of Targa pictures there is nothing to know them by but the name.
    const bool isKnown = name != std::string("a.tga");
    EXPECT_EQ(refusalOf(directory.path + "/" + name).empty(), isKnown) << name;
  }
}

// Devices, sequences over several files and what opens files of its own accord are among none.
TEST(ContainerInput, isOfOneFile_whateverTheDemuxer) {
  const std::set<std::string> others = {
      "concat",     "dash", "hls",        "imf",    "webm_dash_manifest",
      "sdp",        "rtp",  "rtsp",       "sap",    "image2",
      "image2pipe", "tty",  "ffmetadata", "lavfi",  "vobsub",
      "mpegtsraw",  "srt",  "ass",        "webvtt", "data",
      "bin",        "xbin", "adf",        "idf",    "mp3",
      "wav"};
  std::set<std::string> found;
  void* state = nullptr;
  while (const AVInputFormat* const demuxer = av_demuxer_iterate(&state)) {
    const std::string name = demuxer->name;
    const bool isOther = (demuxer->flags & AVFMT_NOFILE) != 0 || others.count(name) != 0;
    EXPECT_FALSE(isOther && isVideoContainer(name)) << name;
    if (isVideoContainer(name)) found.insert(name);
  }
  EXPECT_GT(found.size(), 100U);
  for (const char* const name : {"mov,mp4,m4a,3gp,3g2,mj2", "matroska,webm", "avi", "png_pipe"}) {
    EXPECT_EQ(found.count(name), 1U) << name;
  }
  for (const char* const name : {"", "_pipe", "mp4", "image2pipe", "avi,mov", "svg_pipe"}) {
    EXPECT_FALSE(isVideoContainer(name)) << name;
  }
}

TEST(ContainerInput, isReadAgain_whateverBecameOfItsName) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "mpeg4"});
  VideoSource source = {directory.path + "/clip.mp4", 0, 0, ""};
  source.file = fileOf(source);
  fs::remove(source.path);
  for (int i = 0; i < 2; ++i) {
    VideoReader reader;
    EXPECT_EQ(openVideo(source, 1, &reader), "");
    EXPECT_EQ(videoStream(reader).nb_frames, 25);
  }
  source.file.reset();
  VideoReader reader;
  EXPECT_EQ(openVideo(source, 1, &reader), "No such file or directory");
}

TEST(ContainerInput, leavesNoFileOpen) {
  const TemporaryDirectory directory;
  makeClip(directory, "clip.mp4", {"-c:v", "mpeg4"});
  writeFile(directory.path + "/text.mp4", "#EXTM3U\n");
  refusalOf(directory.path + "/clip.mp4");
  const size_t before = openFiles();
  for (const char* const name : {"clip.mp4", "text.mp4", "missing"}) {
    refusalOf(directory.path + "/" + name);
    EXPECT_EQ(openFiles(), before) << name;
  }
}
