#ifndef Vespermoor_Host_Documents_h
#define Vespermoor_Host_Documents_h

#include <Corrade/Containers/String.h>
#include <Corrade/Containers/StringView.h>
#include <VespermoorEditor/Utils/RapidJson.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/**
 * @brief The JSON document in the file @p path.
 *
 * Throws @ref Failure with the system's reason, or with the line, the column (in bytes) and the
 * reason where the text is no JSON, in the form `scene.json:3:17: Missing a name for object
 * member`.
 */
rapidjson::Document readDocument(Containers::StringView path);

/**
 * @brief The JSON document in the text @p json, whose name in messages is @p name.
 *
 * Throws @ref Failure with the line, the column and the reason.
 */
rapidjson::Document parseDocument(Containers::StringView name, Containers::StringView json);

/** @brief Why JSON with more levels than the library reads is refused. */
Containers::String nestedTooDeep();

/**
 * @brief Indented JSON text of @p value with a newline at its end.
 *
 * @p decimals is the largest number of fractional digits, at least 1.
 */
Containers::String printDocument(const rapidjson::Value& value, int decimals);

} // namespace VespermoorEngine::Host

#endif
