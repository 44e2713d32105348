#pragma once

/// Marks what the library exports; everything else stays inside it.
#define TARNEL_API __attribute__((visibility("default")))
