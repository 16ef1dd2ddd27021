// The renderers of all games.
#pragma once

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/PUBGMHD/PUBGMHDImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
