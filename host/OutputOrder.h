#ifndef Vespermoor_Host_OutputOrder_h
#define Vespermoor_Host_OutputOrder_h

#include <string>
#include <vector>

#include "Manifest.h"

namespace VespermoorEngine::Host {

/**
 * @brief Sorts the @p outputs of the manifest at @p path: each comes after the outputs it is made
 * from, otherwise in the given order.
 *
 * Fills in @ref OutputFile::asInput. Two paths are the same file if they resolve to the same place
 * with all links followed.
 *
 * Throws @ref Failure if two outputs are the same file, if an output is the manifest or a template,
 * or if outputs depend on each other in a cycle.
 */
std::vector<OutputFile> inOrder(const std::string& path, std::vector<OutputFile> outputs);

} // namespace VespermoorEngine::Host

#endif
