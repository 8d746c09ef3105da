// The version symbol of the plug-in that is built with the modern kit.
#include <maya/MTypes.h>

extern PLUGIN_EXPORT char MApiVersion[];
PLUGIN_EXPORT char MApiVersion[] = "201600";
