#include "Benchmarks/Timeline/Scene.h"

namespace scene {

double Program::percentAt(int second) const {
  for (const Work& piece : work) {
    if (Span{piece.begin, piece.end}.contains(second)) return piece.percent;
  }
  return 0;
}

const std::vector<Program>& programs() {
  static const std::vector<Program> all = {
      // It encodes on the graphics card, reads from a slow disk in between, and encodes again.
      {"ffmpeg", {{40, 110, 22}, {110, 140, 2}, {140, 190, 9}, {390, 490, 24}}},
      // A filter of six seconds, and later a preview that goes on for long.
      {"gimp", {{10, 16, 27}, {210, 290, 9}}},
  };
  return all;
}

}  // namespace scene
