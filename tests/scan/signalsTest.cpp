// What events are found in, of small tables of frames.
#include "scan/events/signals.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tables.h"

namespace {

const double NOTHING = std::nan("");

const EventRule& ruleOf(const std::string& type) {
  return EVENT_RULES.at(eventTypeNamed(type));
}

// A table with measures, all of them 0.
FrameTable measuredTable(size_t rows) {
  FrameTable table = emptyTable(rows);
  for (Column<double>& measure : table.measures) measure = std::vector<double>(rows, 0.0);
  return table;
}

void expectSignal(const FrameTable& table, const std::string& type,
                  const std::vector<double>& expected) {
  const Column<double> signal = signalOf(table, ruleOf(type));
  ASSERT_EQ(signal.size(), expected.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(signal[i])) << type << i;
    } else {
      EXPECT_EQ(signal[i], expected[i]) << type << i;
    }
  }
}

}  // namespace

TEST(Signals, ofBlackAreTheShareOfDarkBlocks_andOneForUniformFrames) {
  FrameTable table = measuredTable(4);
  table.measures[DARK_BLOCKS] = {0.25, 1.0, 0.5, NOTHING};
  column(&table, "blackout") = {0, 0, 1, 1};
  expectSignal(table, "black", {0.25, 1.0, 1.0, 1.0});
}

TEST(Signals, ofBarsAreTheNarrowerOfBothSides) {
  FrameTable table = measuredTable(3);
  table.measures[BAR_TOP] = {0.10, 0.11, 0.0};
  table.measures[BAR_BOTTOM] = {0.11, 0.10, 0.1};
  table.measures[BAR_LEFT] = {0.2, 0.0, 0.0};
  table.measures[BAR_RIGHT] = {0.2, 0.0, 0.0};
  expectSignal(table, "letterbox", {0.10, 0.10, 0.0});
  expectSignal(table, "pillarbox", {0.2, 0.0, 0.0});
}

TEST(Signals, ofBarsAreNothing_whereTheseAreUnlikeOrTooWide) {
  FrameTable table = measuredTable(7);
  // Up to 15 % of the wider one, 0.15 of 0.2 = 0.03, or 0.012 of the frame; up to half of it.
  table.measures[BAR_TOP] = {0.2, 0.2, 0.04, 0.04, 0.25, 0.25, 0.2};
  table.measures[BAR_BOTTOM] = {0.171, 0.169, 0.0285, 0.0275, 0.25, 0.251, NOTHING};
  column(&table, "blackout") = {0, 0, 0, 0, 0, 0, 0};
  expectSignal(table, "letterbox", {0.171, 0.0, 0.0285, 0.0, 0.25, 0.0, 0.0});
}

TEST(Signals, areUndefinedOnUniformFrames_butForBlackAndFlicker) {
  FrameTable table = measuredTable(2);
  table.measures[BAR_TOP] = {0.1, 0.1};
  table.measures[BAR_BOTTOM] = {0.1, 0.1};
  column(&table, "blackout") = {1, 0};
  column(&table, "blur") = {3, 4};
  column(&table, "flickering") = {0.5, 0.75};
  expectSignal(table, "letterbox", {NOTHING, 0.1});
  expectSignal(table, "blur", {NOTHING, 4});
  expectSignal(table, "flicker", {0.5, 0.75});
  expectSignal(table, "black", {1.0, 0.0});
}

TEST(Signals, areThoseOfIndicators_inTablesWithoutMeasures) {
  FrameTable table = emptyTable(2);
  column(&table, "blackout") = {0, 1};
  column(&table, "letterbox") = {0.1, 0.2};
  column(&table, "pillarbox") = {0.3, 0.4};
  expectSignal(table, "black", {0, 1});
  expectSignal(table, "letterbox", {0.1, NOTHING});
  expectSignal(table, "pillarbox", {0.3, NOTHING});
}
