# Flags for every source, so that the fuzzers see which code an input reaches.

# RapidJSON does arithmetic on null pointers and unaligned reads, which are harmless but would end
# every run.
set(_vespermoor_ignored ${CMAKE_CURRENT_LIST_DIR}/rapidjson.ignored)
add_compile_options(-fsanitize=fuzzer-no-link -fsanitize-ignorelist=${_vespermoor_ignored})
