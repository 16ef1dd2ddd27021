// Debian's binder headers use standard headers that they do not include.
#pragma once

#include <limits>
#include <memory>
#include <string>

#include <binder/IBinder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <utils/String16.h>
