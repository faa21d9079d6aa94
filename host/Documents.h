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
    /** @brief As @ref RapidJsonUtils::parseJsonFile() reads them: the last digit may be off. */
    AsInLibrary,
    /**
     * @brief Exactly, for @ref printExactly().
     *
     * A decimal becomes the nearest double. The integer `-0` becomes a NaN, which JSON cannot hold
     * otherwise. An integer outside -2^63 to 2^64 - 1 is an error.
     */
    Exact
};

/**
 * @brief The JSON document in the text @p json, named @p name in messages.
 *
 * Accepts the same JSON as the library, except lone surrogates. Throws @ref Failure with the line,
 * the column (in bytes) and the reason, as in `scene.json:3:17: Missing a name for object member`.
 */
rapidjson::Document parseDocument(Containers::StringView name, Containers::StringView json,
                                  Numbers numbers = Numbers::AsInLibrary);

/** @brief The JSON document in the file @p path; also throws @ref Failure if it cannot be read. */
rapidjson::Document readDocument(Containers::StringView path);

/** @brief The reason given for JSON that is nested deeper than the library reads. */
Containers::String nestedTooDeep();

/** @brief How JSON is printed. */
struct JsonFormat {
    /** @brief Maximum number of fractional digits, at least 1; further ones are cut off. */
    int decimals = RapidJsonUtils::defaultMaxDecimalPlaces;
    /** @brief Blanks per level. */
    unsigned int indent = 4;
    /** @brief Everything on one line. */
    bool compact = false;
};

/**
 * @brief JSON text of @p value, which was read with @ref Numbers::Exact, and a newline.
 *
 * Unless digits are cut off, every number reads back unchanged: a decimal is printed as the
 * shortest text with the same nearest double.
 */
rapidjson::StringBuffer printExactly(const rapidjson::Value& value, const JsonFormat& format);

} // namespace VespermoorEngine::Host

#endif
