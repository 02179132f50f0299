// Brings what temporal indicators keep from frame to frame to its start, whatever ran before.
#include "support/startAnew.h"

#include "indicators/flickering.h"
#include "indicators/freezing.h"

void endFlickeringPeriod(double (*flickering)(const Image*, const Image*, Image*, Image*)) {
  uint8_t samples[8 * 8] = {};
  uint8_t switches = 0;
  uint8_t states = 0;
  const Image frame = makeImage(8, 8, samples);
  Image switchesImage = makeImage(1, 1, &switches);
  Image statesImage = makeImage(1, 1, &states);
  // At the end of a period one block alone gives NaN.
  while (flickering(&frame, &frame, &switchesImage, &statesImage) == -1.0) continue;
}

void restartTemporalIndicators() {
  freezing(1, 0.0, 25.0);  // a blackout ends the run
  endFlickeringPeriod(flickering);
}
