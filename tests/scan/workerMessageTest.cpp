// What workers tell, there and back, and what others might write in their place.
#include "scan/processes/workerMessage.h"

#include <gtest/gtest.h>

namespace {

template <typename Message>
std::optional<Message> told(const WorkerMessage& message) {
  const std::string line = messageLine(message);
  EXPECT_EQ(line.find('\n'), line.size() - 1);
  const std::optional<WorkerMessage> read = readMessage(line);
  if (!read || !std::holds_alternative<Message>(*read)) return std::nullopt;
  return std::get<Message>(*read);
}

}  // namespace

TEST(WorkerMessage, isALineOfJsonWithAVersion) {
  EXPECT_EQ(messageLine(Heartbeat{"decoding", 0.25, 1000}),
            R"({"type":"heartbeat","stage":"decoding","position":0.25,"frames":1000,"version":1})"
            "\n");
  EXPECT_EQ(messageLine(JobEnd{true, "no \"room\""}),
            R"({"type":"end","needs_one_thread":true,"output_error":"no \"room\"","version":1})"
            "\n");
}

TEST(WorkerMessage, comesAsItWent) {
  const auto heartbeat = told<Heartbeat>(Heartbeat{"statistics", 1.0, int64_t{1} << 40});
  ASSERT_TRUE(heartbeat);
  EXPECT_EQ(heartbeat->stage, "statistics");
  EXPECT_EQ(heartbeat->position, 1.0);
  EXPECT_EQ(heartbeat->frames, int64_t{1} << 40);
  const auto end = told<JobEnd>(JobEnd{false, "line\nbreak"});
  ASSERT_TRUE(end);
  EXPECT_FALSE(end->needsOneThread);
  EXPECT_EQ(end->outputError, "line\\x0abreak");  // for a terminal
  EXPECT_TRUE(told<JobEnd>(JobEnd{true, ""})->needsOneThread);
}

TEST(WorkerMessage, isKeptWithinItsBounds) {
  const auto heartbeat = [](const std::string& position, const std::string& frames) {
    return std::get<Heartbeat>(
        *readMessage(R"({"version":1,"type":"heartbeat","stage":"\u001b[2J",)"
                     R"("position":)" +
                     position + R"(,"frames":)" + frames + "}"));
  };
  EXPECT_EQ(heartbeat("1e300", "5").position, 1.0);
  EXPECT_EQ(heartbeat("-1", "5").position, 0.0);
  EXPECT_EQ(heartbeat("null", "5").position, 0.0);
  EXPECT_EQ(heartbeat("\"x\"", "5").position, 0.0);
  EXPECT_EQ(heartbeat("0.5", "-5").frames, 0);
  EXPECT_EQ(heartbeat("0.5", "{}").frames, 0);
  EXPECT_EQ(heartbeat("0.5", "5").stage, "\\x1b[2J");
}

TEST(WorkerMessage, isNothing_whenItIsOfNoWorker) {
  for (const char* const line : {"", "{", "[]", "1", "null", "progress 0.5 3", R"({"type":"end"})",
                                 R"({"version":2,"type":"end"})", R"({"version":"1","type":"end"})",
                                 R"({"version":1,"type":"begin"})", R"({"version":1,"type":1})",
                                 R"({"version":1})", "\xff\xfe"}) {
    EXPECT_FALSE(readMessage(line)) << line;
  }
}
