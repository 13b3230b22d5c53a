# RapidJSON is header-only; as a system include its own warnings stay its own.
find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
add_library(rapidjson INTERFACE)
target_include_directories(rapidjson SYSTEM INTERFACE ${RAPIDJSON_INCLUDE_DIR})
