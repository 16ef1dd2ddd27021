// The library is built with hidden visibility; what carries this mark is its
// exported interface.
#pragma once

#define PLUGIN_API __attribute__((visibility("default")))
// For private helpers of an exported class.
#define PLUGIN_LOCAL __attribute__((visibility("hidden")))
