// Brings what temporal indicators keep from frame to frame to its start, whatever ran before.
#ifndef LUMAPROBE_TESTS_STARTANEW_H
#define LUMAPROBE_TESTS_STARTANEW_H

#include "definitions/definitions.h"

// Shows a form of flickering a tiny black frame until its running period ends.
void endFlickeringPeriod(double (*flickering)(const Image*, const Image*, Image*, Image*));

// Ends the run of still frames and the period of flickering.
void restartTemporalIndicators();

#endif
