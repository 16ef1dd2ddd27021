// The renderers' log lines: each begins with the source path, the source line
// and the operation. Some lines carry a fixed line number, which log readers
// know; the others carry that of the call.
#pragma once

#include "platform/device/log.h"

#define RENDERER_LOG_AT(priority, path, line, operation, format, ...) \
    HOOK_LOG(priority, "[%s][%d][%s]: " format, path, line, operation, ##__VA_ARGS__)
#define RENDERER_LOG(priority, path, format, ...) \
    RENDERER_LOG_AT(priority, path, __LINE__, __func__, format, ##__VA_ARGS__)
