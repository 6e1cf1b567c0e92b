#pragma once

/** Marks what a library exports; everything else is hidden. */
#define QV_API __attribute__((visibility("default")))
