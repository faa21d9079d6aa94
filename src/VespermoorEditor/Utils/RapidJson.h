#ifndef VespermoorEditor_Utils_RapidJson_h
#define VespermoorEditor_Utils_RapidJson_h

/**
 * @file
 * The one place that configures RapidJSON: its defaults, with the assertions compiled out, since
 * the typed reads trust their callers about the kind of a value. Everything that uses RapidJSON
 * together with this library includes it through here.
 *
 * Mixing inline functions of RapidJSON with different settings or versions in one process violates
 * the one-definition rule, so a source that included RapidJSON with other settings before, or that
 * finds another version than the library's, does not compile.
 */

#ifndef RAPIDJSON_ASSERT
/** @brief RapidJSON's assertion, which does nothing. */
#define RAPIDJSON_ASSERT(condition)
#endif

#include <rapidjson/document.h>
#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/pointer.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>

#include "VespermoorEngine/Dependencies.h"

/** @cond */
#define VESPERMOOR_TEXT_OF(...) #__VA_ARGS__
#define VESPERMOOR_EXPANDED_TEXT_OF(...) VESPERMOOR_TEXT_OF(__VA_ARGS__)
static_assert(sizeof(VESPERMOOR_EXPANDED_TEXT_OF(RAPIDJSON_ASSERT(true))) == 1,
              "RapidJSON was included with assertions before a header of VespermoorEditorUtils: "
              "include <VespermoorEditor/Utils/RapidJson.h> in place of RapidJSON's headers");
#undef VESPERMOOR_EXPANDED_TEXT_OF
#undef VESPERMOOR_TEXT_OF
/** @endcond */

#if defined(RAPIDJSON_USE_MEMBERSMAP) && RAPIDJSON_USE_MEMBERSMAP
#error RapidJSON was included with RAPIDJSON_USE_MEMBERSMAP before a header of VespermoorEditorUtils, which lays objects out without it
#endif
#if defined(__x86_64__) || defined(__aarch64__)
static_assert(RAPIDJSON_48BITPOINTER_OPTIMIZATION == 1,
              "RapidJSON was included without its 48-bit pointers before a header of "
              "VespermoorEditorUtils, which lays values out with them");
#endif
static_assert(sizeof(rapidjson::SizeType) == 4,
              "RapidJSON was included with another SizeType before a header of "
              "VespermoorEditorUtils, which lays values out with 32-bit sizes");
static_assert(
    sizeof(rapidjson::MemoryPoolAllocator<>) == VESPERMOOR_RAPIDJSON_ALLOCATOR_SIZE,
    "the compiler finds another version of RapidJSON than VespermoorEditorUtils was built "
    "with: put that one first on the include path");

#endif
