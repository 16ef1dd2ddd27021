// The stand-in for the system's game service.
#pragma once

// What the service manager answers for "orvane.pelune" from now on: "absent",
// "fail" (the transaction fails), "exception", or the number that the service
// answers; "" changes nothing. To be called before the plug-in first asks;
// `answer` is copied.
extern "C" void rig_set_game_service(const char* answer);
