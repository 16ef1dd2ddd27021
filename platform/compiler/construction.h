// The order in which objects with static storage are constructed when the library is
// loaded: those of a lower stage first, whatever the linker does with the object files.
// They are destroyed in the reverse order. Each room states the stage of its objects;
// hook/construction_order.h, above them all, holds the order together.
#pragma once

// `stage` is a constant above 100; those up to there belong to the implementation.
#define CONSTRUCTED_AT(stage) __attribute__((init_priority(stage)))
