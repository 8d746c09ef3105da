// Preloaded into the window when it runs under a leak checker: turns dlclose into a no-op. Memory
// reachable only from an OpenGL driver's globals would otherwise be reported as leaked, because the
// driver is unloaded before the checker runs.

extern "C" __attribute__((visibility("default"))) int dlclose(void*);

extern "C" int dlclose(void*) { return 0; }
