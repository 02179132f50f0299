#include "scan/record/outputChoice.h"

const char* thumbsName(Thumbs thumbs) {
  switch (thumbs) {
    case Thumbs::NONE:
      return "none";
    case Thumbs::EVENTS:
      return "events";
    default:
      return "all";
  }
}
