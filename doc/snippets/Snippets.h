#ifndef Vespermoor_Snippets_h
#define Vespermoor_Snippets_h

#include <Corrade/Containers/StringView.h>

/* What the pages of the documentation quote. Paths lead to files that the functions may change. */

void readJson(Corrade::Containers::StringView scenePath);
void renderTemplate(Corrade::Containers::StringView scenePath);
void writeJson(Corrade::Containers::StringView scenePath);
void watchFolder(Corrade::Containers::StringView folder, Corrade::Containers::StringView saved);
void watchForever(Corrade::Containers::StringView folder);
void replaceRegion();
void convertNames();
void findData(Corrade::Containers::StringView programs);

/* Renders the examples of the template language; returns whether all give what they promise. */
bool renderExamples();

#endif
