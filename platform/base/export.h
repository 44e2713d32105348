#pragma once

/// Marks what the framework layer exports; everything else stays inside it.
#define TARNEL_PLATFORM_API __attribute__((visibility("default")))
