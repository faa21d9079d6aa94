#ifndef Vespermoor_Host_Documents_h
#define Vespermoor_Host_Documents_h

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <VespermoorEditor/Utils/RapidJson.h>
#include <VespermoorEditor/Utils/RapidJsonUtils.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/** @brief How the numbers of a document are read. */
enum class Numbers {
    /** @brief As @ref RapidJsonUtils::parseJsonFile() reads them, which may miss the last digit. */
    AsInLibrary,
    /**
     * @brief As they are, for @ref printExactly().
     *
     * A decimal is the nearest double, and the integer `-0` is a NaN, which JSON has no other use
     * for. An integer outside of -2^63 to 2^64 - 1 is an error.
     */
    Exact
};

/**
 * @brief The JSON document in the text @p json, named @p name in messages.
 *
 * Takes what the library takes, and refuses lone surrogates beside. Throws @ref Failure with the
 * line, the column (in bytes) and the reason, as in `scene.json:3:17: Missing a name for object
 * member`.
 */
rapidjson::Document parseDocument(Containers::StringView name, Containers::StringView json,
                                  Numbers numbers = Numbers::AsInLibrary);

/** @brief The JSON document in the file @p path; throws @ref Failure also if it is not read. */
rapidjson::Document readDocument(Containers::StringView path);

/** @brief Why JSON with more levels than the library reads is refused. */
Containers::String nestedTooDeep();

/** @brief How JSON is printed. */
struct JsonFormat {
    /** @brief Largest number of fractional digits, at least 1; the others are cut off. */
    int decimals = RapidJsonUtils::defaultMaxDecimalPlaces;
    /** @brief Blanks to a level. */
    unsigned int indent = 4;
    /** @brief Everything on one line. */
    bool compact = false;
};

/**
 * @brief JSON text of @p value, which was read with @ref Numbers::Exact, and a newline.
 *
 * Unless digits are cut off, every number reads back as the same one: a decimal is the shortest
 * text with the same nearest double.
 */
rapidjson::StringBuffer printExactly(const rapidjson::Value& value, const JsonFormat& format);

} // namespace VespermoorEngine::Host

#endif
