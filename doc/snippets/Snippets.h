#ifndef Vespermoor_Snippets_h
#define Vespermoor_Snippets_h

#include <Corrade/Containers/StringView.h>

/* The code quoted in the documentation. The functions may change the files at the paths they
   get. */

void readJson(Corrade::Containers::StringView scenePath);
void renderTemplate(Corrade::Containers::StringView scenePath);
void writeJson(Corrade::Containers::StringView scenePath);
void watchFolder(Corrade::Containers::StringView folder, Corrade::Containers::StringView saved);
void watchForever(Corrade::Containers::StringView folder);
void replaceRegion();
void convertNames();
void findData(Corrade::Containers::StringView programs);

void addFog(Corrade::Containers::StringView scenePath);
void readTexture(Corrade::Containers::StringView name);
void followScene(Corrade::Containers::StringView scenePath);
void replaceLines(Corrade::Containers::StringView text);

void backUp(Corrade::Containers::StringView project, Corrade::Containers::StringView backup);
void discard(Corrade::Containers::StringView asset);
void openScene(Corrade::Containers::StringView folder);
void countScenes(Corrade::Containers::StringView project);

/* Renders the examples of the template language; returns whether each has the output next to it. */
bool renderExamples();

#endif
