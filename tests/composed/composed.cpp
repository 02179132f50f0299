#include "composed/composed.h"

FrameResults composed::Results = {};
