// Which files lack their end: real ones, whole and cut at many places.
#include "scan/video/fileEnding.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "clips.h"
#include "scan/video/videoReader.h"

namespace {

struct Kind {
  const char* name;
  const char* container;
  Arguments encoding;
};

const std::vector<Kind> KINDS = {
    {"a.mp4", "mov,mp4,m4a,3gp,3g2,mj2", {"-c:v", "mpeg4"}},
    {"a.mov", "mov,mp4,m4a,3gp,3g2,mj2", {"-c:v", "mjpeg", "-movflags", "faststart"}},
    {"a.mkv", "matroska,webm", {"-c:v", "ffv1"}},
    {"a.webm", "matroska,webm", {"-c:v", "libvpx", "-deadline", "realtime"}},
    {"a.avi", "avi", {"-c:v", "mpeg4"}},
    {"a.flv", "flv", {"-c:v", "flv1"}},
    {"a.gif", "gif", {}},
    {"a.ogv", "ogg", {"-c:v", "libtheora"}},
    {"a.wmv", "asf", {"-c:v", "wmv2"}},
    {"a.mxf", "mxf", {"-c:v", "mpeg2video"}},
    {"a.dv", "dv", {"-c:v", "dvvideo", "-s", "720x576", "-pix_fmt", "yuv420p"}},
    {"ntsc.dv",
     "dv",
     {"-c:v", "dvvideo", "-s", "720x480", "-r", "30000/1001", "-pix_fmt", "yuv411p", "-frames:v",
      "10"}},
    {"a.obu", "obu", {"-c:v", "libsvtav1", "-preset", "12", "-pix_fmt", "yuv420p"}},
    {"a.mjpeg", "mjpeg", {"-c:v", "mjpeg", "-f", "mjpeg"}},
    {"a.jpg", "jpeg_pipe", {"-frames:v", "1"}},
    {"a.roq", "roq", {"-c:v", "roqvideo", "-s", "128x128", "-r", "30"}},
};

// A RIFF chunk with so many bytes in it, without the one that makes an odd length even.
std::string chunkWith(uint8_t bytes) {
  return "RIFF" + std::string(1, static_cast<char>(bytes)) + std::string(3, '\0') +
         std::string(bytes, 'x');
}

bool lacksEndingAsAVI(const std::string& bytes) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.avi", bytes);
  return lacksEnding(*openInput(directory.path + "/a.avi"), "avi");
}

}  // namespace

TEST(LacksEnding, isFalseOfWholeFilesAndTrueOfThoseCutAnywhere) {
  const TemporaryDirectory directory;
  for (const Kind& kind : KINDS) {
    SCOPED_TRACE(kind.name);
    makeClip(directory, kind.name, kind.encoding);
    const std::string whole = readFile(directory.path + "/" + kind.name);
    EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/" + kind.name), kind.container));
    const std::string cut = directory.path + "/cut";
    // From a third on, behind what a file begins with, to the last byte.
    for (size_t k = 0; k < 100; ++k) {
      const size_t bytes = whole.size() / 3 + k * (whole.size() - 1 - whole.size() / 3) / 99;
      writeFile(cut, whole.substr(0, bytes));
      EXPECT_TRUE(lacksEnding(*openInput(cut), kind.container)) << bytes << " of " << whole.size();
    }
  }
}

TEST(LacksEnding, isTrueOfATransportStreamCutInsideAPacket) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.ts", {"-c:v", "mpeg2video"});
  const std::string whole = readFile(directory.path + "/a.ts");
  const std::string cut = directory.path + "/cut";
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/a.ts"), "mpegts"));
  writeFile(cut, whole.substr(0, 188 * 20));
  EXPECT_FALSE(lacksEnding(*openInput(cut), "mpegts"));  // nobody can know
  writeFile(cut, whole.substr(0, 188 * 20 + 1));
  EXPECT_TRUE(lacksEnding(*openInput(cut), "mpegts"));
}

TEST(LacksEnding, isFalseOfWhatSaysNothingAboutItsLength) {
  const TemporaryDirectory directory;
  // A pipe cannot be sought: lengths stay unknown.
  makeClip(directory, "live.mkv", {"-c:v", "ffv1", "-f", "matroska", "-live", "1"});
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/live.mkv"), "matroska,webm"));
  // The last box of an MP4 may reach to the end, whatever it holds: length 0.
  writeFile(directory.path + "/open.mp4", std::string("\0\0\0\x8"
                                                      "free\0\0\0\0mdat1234567",
                                                      23));
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/open.mp4"), "mov,mp4,m4a,3gp,3g2,mj2"));
  // One with a length of 64 bits: 24 of which 22 are there, then all.
  const std::string box(
      "\0\0\0\1mdat\0\0\0\0\0\0\0\x18"
      "12345678",
      24);
  writeFile(directory.path + "/long.mp4", box.substr(0, 22));
  EXPECT_TRUE(lacksEnding(*openInput(directory.path + "/long.mp4"), "mov,mp4,m4a,3gp,3g2,mj2"));
  writeFile(directory.path + "/long.mp4", box);
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/long.mp4"), "mov,mp4,m4a,3gp,3g2,mj2"));
}

TEST(LacksEnding, isFalseOfAVI_whetherAnOddLengthIsMadeEvenAtItsEndOrNot) {
  const std::string odd = chunkWith(5);
  EXPECT_FALSE(lacksEndingAsAVI(odd));
  EXPECT_FALSE(lacksEndingAsAVI(odd + '\0'));
  EXPECT_TRUE(lacksEndingAsAVI(odd.substr(0, odd.size() - 1)));
  // One more is the beginning of something else.
  EXPECT_FALSE(lacksEndingAsAVI(odd + std::string(2, '\0')));
}

TEST(LacksEnding, findsTheChunkBehindOneOfOddLength_atAnEvenPlace) {
  for (const uint8_t length : {uint8_t{4}, uint8_t{5}}) {
    const std::string chunks = chunkWith(5) + '\0' + chunkWith(length);
    EXPECT_FALSE(lacksEndingAsAVI(chunks)) << int{length};
    EXPECT_TRUE(lacksEndingAsAVI(chunks.substr(0, chunks.size() - 1))) << int{length};
  }
}

TEST(LacksEnding, isFalseOfOtherContainersAndOfWhatIsNotThere) {
  const TemporaryDirectory directory;
  writeFile(directory.path + "/a.nut", "anything");
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/a.nut"), "nut"));
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/missing.gif"), "gif"));
  // A pipe is not waited for.
  ASSERT_EQ(mkfifo((directory.path + "/fifo.gif").c_str(), 0600), 0);
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/fifo.gif"), "gif"));
  writeFile(directory.path + "/empty.gif", "");
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/empty.gif"), "gif"));
}

TEST(LacksEnding, isFalseOfAJPEGThatMoreIsBehind) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.jpg", {"-frames:v", "1"});
  const std::string whole = readFile(directory.path + "/a.jpg");
  const std::string other = directory.path + "/other.jpg";
  // Even what could be the beginning of another picture.
  writeFile(other, whole + std::string(1000, '\0') + "\xff\xd8\xff\xda" + std::string(1000, '\0'));
  EXPECT_FALSE(lacksEnding(*openInput(other), "jpeg_pipe"));
  writeFile(other, whole.substr(0, whole.size() - 2));
  EXPECT_TRUE(lacksEnding(*openInput(other), "jpeg_pipe"));
  // The marker may lie anywhere: on both sides of a chunk of 64 KiB, too.
  const size_t data = whole.find("\xff\xda") + 12;
  for (const size_t length : {65535U, 65536U, 65537U}) {
    writeFile(other, whole.substr(0, data) + std::string(length - 12 + 2, 'x') + "\xff\xd9");
    EXPECT_FALSE(lacksEnding(*openInput(other), "jpeg_pipe")) << length;
  }
  // Other pictures have other ends.
  writeFile(other, whole.substr(1, whole.size() - 3));
  EXPECT_FALSE(lacksEnding(*openInput(other), "jpeg_pipe"));
  writeFile(other, "\xff\xd8\xff\xe0" + std::string(4, '\0'));
  EXPECT_FALSE(lacksEnding(*openInput(other), "jpeg_pipe"));
}

TEST(LacksEnding, isFalseOfASFAndMXF_whoseHeadersSayNothing) {
  const TemporaryDirectory directory;
  makeClip(directory, "a.wmv", {"-c:v", "wmv2"});
  std::string whole = readFile(directory.path + "/a.wmv");
  const size_t properties = whole.find("\xa1\xdc\xab\x8c");
  ASSERT_NE(properties, std::string::npos);
  whole.at(properties + 88) |= 1;  // broadcast
  writeFile(directory.path + "/cut.wmv", whole.substr(0, whole.size() / 2));
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/cut.wmv"), "asf"));
  // Of a pipe the muxer cannot go back to the header.
  makeClip(directory, "a.mxf", {"-c:v", "mpeg2video", "-seekable", "0", "-f", "mxf"});
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/a.mxf"), "mxf"));
  for (const size_t bytes : {0U, 1U, 16U, 17U, 30U, 48U}) {
    writeFile(directory.path + "/short", readFile(directory.path + "/a.mxf").substr(0, bytes));
    EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/short"), "mxf")) << bytes;
    writeFile(directory.path + "/short", whole.substr(0, bytes));
    EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/short"), "asf")) << bytes;
  }
}

TEST(LacksEnding, readsAllFourBytesOfALength) {
  // Of 16 MiB there are four bytes; without the highest one the chunk would be empty.
  EXPECT_TRUE(lacksEndingAsAVI(std::string("RIFF\0\0\0\1xxxx", 12)));
}

TEST(LacksEnding, isTrueOfFLV_whoseLastTagWouldBeginBeforeTheFile) {
  const TemporaryDirectory directory;
  // A tag of 11 bytes and its length take 15.
  const std::string tag = std::string(10, '\0') + std::string("\0\0\0\xb", 4);
  writeFile(directory.path + "/a.flv", tag);
  EXPECT_TRUE(lacksEnding(*openInput(directory.path + "/a.flv"), "flv"));
  writeFile(directory.path + "/a.flv", '\0' + tag);
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/a.flv"), "flv"));
}

TEST(LacksEnding, isFalseOfASinglePageThatClosesItsStream) {
  const TemporaryDirectory directory;
  const std::string page = std::string("OggS\0\4", 6) + std::string(21, '\0');  // of no segments
  writeFile(directory.path + "/a.ogg", page);
  EXPECT_FALSE(lacksEnding(*openInput(directory.path + "/a.ogg"), "ogg"));
  writeFile(directory.path + "/a.ogg", page.substr(0, 26));
  EXPECT_TRUE(lacksEnding(*openInput(directory.path + "/a.ogg"), "ogg"));
}
