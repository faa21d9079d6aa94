#include <Corrade/Utility/Debug.h>

#include <VespermoorEditor/Utils/Template.h>

#include "SceneValue.h"
#include "Snippets.h"

using namespace Corrade;
using namespace VespermoorEngine;

namespace {

struct Example {
    const char* source;
    const char* output;
};

const char* const data =
    //! [data]
    R"({
    "user": { "name": "Ada", "admin": true, "guest": false },
    "scale": 2.5
})"
    //! [data]
    ;

const Example examples[] = {
    //! [examples]
    {"Hello {{ user.name }}!", "Hello Ada!"},
    {"{{user.name}}{{scale}}", "Ada2.5000"},
    {"{{ if user.admin }}All of it.{{ end }}", "All of it."},
    {"{{ if user.guest }}Hidden.{{ end }}Seen.", "Seen."},
    {"{{ if user.name == 'Ada' }}It is you.{{ end }}", "It is you."},
    {"{{ if user.name != 'Bob' }}Not Bob.{{ end }}", "Not Bob."},
    {"{{ user.name == \"Ada\" }}", "true"},
    {"{{ if scale == '2.5000' }}As text.{{ end }}", "As text."},
    {"{{ '{{' }} stands for itself }}", "{{ stands for itself }}"},
    {"1{{ if user.guest }}2{{ if user.admin }}3{{ end }}4{{ end }}5", "145"},
    {"a{{ end }}b", "ab"},
    //! [examples]
};

} // namespace

bool renderExamples() {
    rapidjson::Document document;
    document.Parse(data);
    SceneValue root{document};
    bool all = true;
    for (const Example& example : examples) {
        const Containers::String output = Template{example.source}.render(root);
        if (output != Containers::StringView{example.output}) {
            Utility::Error{} << example.source << "gives" << output;
            all = false;
        }
    }
    return all;
}
