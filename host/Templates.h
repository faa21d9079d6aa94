#ifndef Vespermoor_Host_Templates_h
#define Vespermoor_Host_Templates_h

#include <sstream>
#include <string>

#include <Corrade/Containers/Pointer.h>
#include <Corrade/Utility/Debug.h>
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
 * @brief Takes what the library prints as errors while it lives.
 *
 * Making one takes longer than rendering a small template, so many renderings share one.
 */
class PrintedErrors {
public:
    /**
     * @brief The lines since the last call as one reason, without the names of functions.
     *
     * Empty if nothing was printed.
     */
    std::string takeReason();

private:
    std::ostringstream printed;
    Corrade::Utility::Error redirected{&printed};
};

/**
 * @brief Renders @p source against @p scopes. The first scope that has a name gives its value.
 *
 * Throws @ref Failure with the place of the first directive that fails and the reason, in the form
 * `title.tmpl:3:14: Undefined name user.name`. Takes the reason from @p errors.
 */
Containers::String render(NamedTemplate& source,
                          Containers::ArrayView<const Containers::Reference<JsonObject>> scopes,
                          PrintedErrors& errors);

} // namespace VespermoorEngine::Host

#endif
