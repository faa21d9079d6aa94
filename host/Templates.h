#ifndef Vespermoor_Host_Templates_h
#define Vespermoor_Host_Templates_h

#include <Corrade/Containers/Pointer.h>
#include <VespermoorEditor/Utils/Template.h>

#include "Failure.h"

namespace VespermoorEngine::Host {

/** @brief A compiled template, with its path and text for messages. */
struct NamedTemplate {
    Containers::String path;
    Containers::String source;
    Containers::Pointer<Template> compiled;
};

/**
 * @brief Compiles the file @p path.
 *
 * Throws @ref Failure with the system's reason, or with the place and the reason, in the form
 * `title.tmpl:3:14: Syntax error: Unterminated template directive`.
 */
NamedTemplate readTemplate(Containers::StringView path);

/** @brief Compiles @p source, the text of the file @p path; throws as @ref readTemplate(). */
NamedTemplate compileTemplate(Containers::StringView path, Containers::String source);

/**
 * @brief Renders @p source against @p scopes. The first scope that has a name gives its value.
 *
 * Throws @ref Failure with the place of the first directive that fails and the reason, in the form
 * `title.tmpl:3:14: Undefined name user.name`.
 */
Containers::String render(NamedTemplate& source,
                          Containers::ArrayView<const Containers::Reference<JsonObject>> scopes);

} // namespace VespermoorEngine::Host

#endif
