#include "Templates.h"

#include <sstream>
#include <string>
#include <utility>

#include <Corrade/Utility/Debug.h>
#include <VespermoorEditor/Utils/JsonObject.h>

#include "Failure.h"
#include "Files.h"

namespace VespermoorEngine::Host {

namespace {

namespace Utility = Corrade::Utility;

/* The lines that the library printed as one reason, without the names of its functions. */
std::string reasonFrom(const std::string& printed) {
    std::istringstream lines{printed};
    std::string reason;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t function = line.find("(): ");
        reason += reason.empty() ? "" : "; ";
        reason += function == std::string::npos ? line : line.substr(function + 4);
    }
    return reason;
}

/* A failure shows in what is printed: an empty output can be a success. */
template <class Action>
auto withFailures(const Containers::StringView path, const Action& action) {
    std::ostringstream printed;
    auto result = [&] {
        Utility::Error redirected{&printed};
        return action();
    }();
    if (!printed.str().empty()) {
        throw Failure{path, reasonFrom(printed.str())};
    }
    return result;
}

} // namespace

NamedTemplate readTemplate(const Containers::StringView path) {
    return compileTemplate(path, readFile(path));
}

/* The library ends a template at a zero byte without a word. */
NamedTemplate compileTemplate(const Containers::StringView path, const Containers::String& source) {
    if (Containers::StringView{source}.contains('\0')) {
        throw Failure{path, "Contains a zero byte"};
    }
    Containers::Pointer<Template> compiled =
        withFailures(path, [&] { return Containers::pointer<Template>(source); });
    return {path, std::move(compiled)};
}

Containers::String
render(NamedTemplate& source,
       const Containers::ArrayView<const Containers::Reference<JsonObject>> scopes) {
    return withFailures(source.path, [&] { return source.compiled->render(scopes); });
}

} // namespace VespermoorEngine::Host
