// The twenty effects' entries, one function per effect source file. The style
// table is assembled from these on first use, so no entry depends on the order
// in which other files are initialised.
#pragma once

#include "styles/style.h"

namespace tess {

StyleEntry AtmosphereStyle();
StyleEntry BubblesStyle();
StyleEntry CarpetStyle();
StyleEntry CubistStyle();
StyleEntry FountainStyle();
StyleEntry GridlockStyle();
StyleEntry GumdropsStyle();
StyleEntry HyperspaceStyle();
StyleEntry IrisStyle();
StyleEntry MachineStyle();
StyleEntry MuralStyle();
StyleEntry NeuralNetworkStyle();
StyleEntry ParticlesStyle();
StyleEntry PhasersOnStunStyle();
StyleEntry SkipIntroStyle();
StyleEntry ShapedFountainStyle();
StyleEntry SnowStyle();
StyleEntry SolidStyle();
StyleEntry WaveletStyle();
StyleEntry WhiteNoiseStyle();

}  // namespace tess
