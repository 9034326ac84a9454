// What programs outside the shared library may call of the platform; everything else stays hidden.
#pragma once

#define PLATFORM_EXPORT __attribute__((visibility("default")))
