/// Native window handle, opaque.
#pragma once

typedef void* MNativeWindowHdl;
