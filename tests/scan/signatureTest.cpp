// Files that begin like videos, and others.
#include "scan/files/signature.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "clips.h"

TEST(VideoSignature, isKnownOfEveryContainerThatVideosComeIn) {
  const TemporaryDirectory directory;
  struct Kind {
    const char* format;
    Arguments encoding;
  };
  const std::vector<Kind> kinds = {
      {"asf", {"-c:v", "wmv2"}},
      {"avi", {"-c:v", "mpeg4"}},
      {"flv", {"-c:v", "flv1"}},
      {"gxf", {"-c:v", "mpeg2video", "-s", "720x576", "-b:v", "8M"}},
      {"ivf", {"-c:v", "libvpx", "-deadline", "realtime"}},
      {"matroska", {"-c:v", "mpeg4"}},
      {"webm", {"-c:v", "libvpx", "-deadline", "realtime"}},
      {"mov", {"-c:v", "mpeg4"}},
      {"mp4", {"-c:v", "mpeg4", "-movflags", "faststart"}},
      {"vob", {"-c:v", "mpeg2video"}},
      {"mpeg", {"-c:v", "mpeg1video"}},
      {"mpegts", {"-c:v", "mpeg2video"}},
      {"mpegts", {"-c:v", "mpeg2video", "-mpegts_m2ts_mode", "1"}},
      {"mxf", {"-c:v", "mpeg2video"}},
      {"nut", {"-c:v", "mpeg4"}},
      {"ogg", {"-c:v", "libtheora"}},
      {"rm", {"-c:v", "rv10", "-s", "176x144"}},
      {"yuv4mpegpipe", {"-pix_fmt", "yuv420p", "-frames:v", "1"}},
  };
  for (const Kind& kind : kinds) {
    Arguments encoding = kind.encoding;
    encoding.insert(encoding.end(), {"-f", kind.format});
    makeClip(directory, "clip", encoding);
    EXPECT_TRUE(hasVideoSignature(directory.path + "/clip")) << kind.format;
  }
}

TEST(VideoSignature, isNotSeenInOtherFiles) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/file";
  for (const char* const format : {"wav", "mp3", "flac", "aiff", "adts"}) {
    ffmpeg(directory, {"-f", "lavfi", "-i", "sine=duration=1", "-f", format, "file"});
    EXPECT_FALSE(hasVideoSignature(path)) << format;
  }
  makeClip(directory, "file", {"-frames:v", "1", "-c:v", "png", "-f", "image2"});
  EXPECT_FALSE(hasVideoSignature(path));
  for (const std::string& text :
       {std::string(), std::string("x"), std::string("a text\n"), std::string(4000, '\0'),
        std::string(3, 'G'), std::string("\x1a\x45\xdf"), std::string("#EXTM3U\n"),
        std::string("ffconcat version 1.0\n")}) {
    writeFile(path, text);
    EXPECT_FALSE(hasVideoSignature(path)) << text.substr(0, 10);
  }
}

TEST(VideoSignature, ofATransportStreamTakesSeveralPackets) {
  const TemporaryDirectory directory;
  const std::string path = directory.path + "/file";
  for (const size_t length : {188U, 204U}) {
    std::string packet(length, 'x');
    packet[0] = 'G';
    std::string stream;
    for (int i = 0; i < 4; ++i) stream += packet;
    writeFile(path, stream);
    EXPECT_FALSE(hasVideoSignature(path)) << length;
    writeFile(path, stream + packet);
    EXPECT_TRUE(hasVideoSignature(path)) << length;
    packet[0] = 'H';
    writeFile(path, stream + packet);
    EXPECT_FALSE(hasVideoSignature(path)) << length;
  }
}

TEST(VideoSignature, isNotLookedForInWhatIsNoFile) {
  const TemporaryDirectory directory;
  ASSERT_EQ(mkfifo((directory.path + "/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(hasVideoSignature(directory.path + "/pipe"));
  EXPECT_FALSE(hasVideoSignature(directory.path));
  EXPECT_FALSE(hasVideoSignature(directory.path + "/missing"));
  EXPECT_FALSE(hasVideoSignature("/dev/zero"));
}
