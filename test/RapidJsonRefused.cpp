// Does not compile: a host has included RapidJSON with settings that the library does not support.

#if defined(REFUSED_ASSERTIONS)
#include <rapidjson/document.h>
#elif defined(REFUSED_POINTERS)
#define RAPIDJSON_ASSERT(x)
#define RAPIDJSON_48BITPOINTER_OPTIMIZATION 0
#include <rapidjson/document.h>
#elif defined(REFUSED_MEMBERS)
#define RAPIDJSON_ASSERT(x)
#define RAPIDJSON_USE_MEMBERSMAP 1
#include <rapidjson/document.h>
#elif defined(REFUSED_VERSION)
#include <VespermoorEngine/Dependencies.h>
#undef VESPERMOOR_RAPIDJSON_ALLOCATOR_SIZE
#define VESPERMOOR_RAPIDJSON_ALLOCATOR_SIZE 8
#endif

#include "VespermoorEditor/Utils/RapidJson.h"

int main() {}
