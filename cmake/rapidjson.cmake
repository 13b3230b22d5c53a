# RapidJSON is header-only; as a system include it causes no warnings here.
find_path(RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
add_library(mirrorRapidjson INTERFACE)
target_include_directories(mirrorRapidjson SYSTEM INTERFACE ${RAPIDJSON_INCLUDE_DIR})
