#ifndef Vespermoor_Host_RenderCommand_h
#define Vespermoor_Host_RenderCommand_h

namespace CLI {
class App;
}

namespace VespermoorEngine::Host {

/** @brief Adds `render`, which renders a template against JSON documents. */
void addRenderCommand(CLI::App& program);

} // namespace VespermoorEngine::Host

#endif
