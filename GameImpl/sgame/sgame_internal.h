// Shared by SGAMEImpl's source files only.
#pragma once

#include "GameImpl/common/renderer_log.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "platform/loader/gl_constants.h"

#define SGAME_LOG(priority, ...) RENDERER_LOG(priority, "GameImpl/sgame/SGAMEImpl", __VA_ARGS__)
// For the lines whose number log readers know.
#define SGAME_LOG_AT(priority, line, ...) \
    RENDERER_LOG_AT(priority, "GameImpl/sgame/SGAMEImpl", line, __func__, __VA_ARGS__)
