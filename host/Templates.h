#ifndef Vespermoor_Host_Templates_h
#define Vespermoor_Host_Templates_h

#include <Corrade/Containers/Pointer.h>
#include <VespermoorEditor/Utils/Template.h>

namespace VespermoorEngine::Host {

/** @brief A compiled template and the file that it came from, for the messages about it. */
struct NamedTemplate {
    Containers::String path;
    Containers::Pointer<Template> compiled;
};

/** @brief Compiles the file @p path; throws @ref Failure with the reason. */
NamedTemplate readTemplate(Containers::StringView path);

/**
 * @brief Compiles @p source, the text of the file @p path; throws @ref Failure with the reason.
 *
 * Takes a string, since the library wants to be told that its view is terminated, and Corrade's
 * view of a temporary string does not tell.
 */
NamedTemplate compileTemplate(Containers::StringView path, const Containers::String& source);

/** @brief Renders @p source; throws @ref Failure with the reason of the first failed directive. */
Containers::String render(NamedTemplate& source,
                          Containers::ArrayView<const Containers::Reference<JsonObject>> scopes);

} // namespace VespermoorEngine::Host

#endif
