// The schema of configuration documents, docs/mirror-config.schema.json, inside the program.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/schema.h>
#include <string>

namespace config {

// The schema's own text.
const char *schemaSource();

// The schema as a tree, and made ready for validators. Both last for the process and may be read
// from any thread.
const rapidjson::Document &schemaTree();
const rapidjson::SchemaDocument &documentSchema();

// Where in the tree a part's rules stand, reached through `$ref` if need be.
const rapidjson::Value &follow(const rapidjson::Value &rules);

// A good value by these rules: objects hold every required member, arrays one element, all else is
// the rules' default.
rapidjson::Value sampleOf(const rapidjson::Value &rules,
                          rapidjson::Document::AllocatorType &allocator);

// "an integer that fits 32 bits", "a string" and so on.
std::string expectationOf(const rapidjson::Value &rules);

} // namespace config
