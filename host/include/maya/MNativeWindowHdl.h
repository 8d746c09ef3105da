/// The windowing system's own handle of a window. Opaque: pass it on, test it for NULL.
#pragma once

typedef void* MNativeWindowHdl;
