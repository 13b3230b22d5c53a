#include "tools/config/check.h"

#include "tools/config/quote.h"

#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <strings.h>

namespace config {

static const char anInteger[] = "an integer that fits 32 bits";
static const char aNumber[] = "a number";
static const char aString[] = "a string";
static const char anArray[] = "an array";
static const char anObject[] = "an object";

static std::string quote(const rapidjson::Value &text) {
    return quote(text.GetString(), text.GetStringLength());
}

static std::string numberText(const rapidjson::Value &number) {
    if (number.IsDouble() && !std::isfinite(number.GetDouble()))
        return "a number too large for any type";
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    number.Accept(writer);
    return buffer.GetString();
}

static std::string describeFound(const rapidjson::Value &value) {
    switch (value.GetType()) {
    case rapidjson::kNullType:
        return "null";
    case rapidjson::kFalseType:
        return "false";
    case rapidjson::kTrueType:
        return "true";
    case rapidjson::kObjectType:
        return "an object";
    case rapidjson::kArrayType:
        return "an array";
    case rapidjson::kStringType:
        return "the string " + quote(value);
    case rapidjson::kNumberType:
        break;
    }
    return numberText(value);
}

// As describeFound, and how to mend an integer that is written as a real number.
static std::string describeNoInteger(const rapidjson::Value &value) {
    std::string text = describeFound(value);
    if (!value.IsDouble())
        return text;
    const double number = value.GetDouble();
    if (std::trunc(number) == number && number >= INT32_MIN && number <= INT32_MAX)
        text += " (write it without fraction and exponent)";
    return text;
}

namespace {

// One value of the tree that is an object or an array, and where it stands.
struct Place {
    const rapidjson::Value &value;
    std::string pointer;
};

class Checker {
public:
    explicit Checker(std::vector<Problem> &list) : problems(list) {}

    Document readDocument(const rapidjson::Value &root);

private:
    DeviceEntry readDevice(const Place &device);
    PanelEntry readPanel(const Place &panel);

    std::int32_t readInteger(const Place &object, const char *name);
    double readNumber(const Place &object, const char *name);
    std::string readString(const Place &object, const char *name);

    // Calls `read` with every element of an array that is an object; reports those that are not.
    template <typename Read> void readObjects(const Place &object, const char *name, Read read);

    // The member that the library's lookup takes, the first of that name; null when it is missing,
    // which is then reported.
    const rapidjson::Value *find(const Place &object, const char *name, const char *expected);

    void report(const std::string &pointer, const char *expected, const std::string &found) {
        problems.push_back({pointer, std::string("expected ") + expected + ", found " + found});
    }

    std::vector<Problem> &problems;
};

} // namespace

// The pointer to a member. None of the names has a character that pointers escape.
static std::string step(const Place &object, const char *name) {
    return object.pointer + "/" + name;
}

const rapidjson::Value *Checker::find(const Place &object, const char *name, const char *expected) {
    const auto member = object.value.FindMember(name);
    if (member != object.value.MemberEnd())
        return &member->value;
    std::string found = "no member of this name";
    for (const auto &other : object.value.GetObject()) {
        if (strcasecmp(other.name.GetString(), name) == 0) {
            found += " (" + quote(other.name) + " differs in upper and lower case)";
            break;
        }
    }
    report(step(object, name), expected, found);
    return nullptr;
}

std::int32_t Checker::readInteger(const Place &object, const char *name) {
    const auto *value = find(object, name, anInteger);
    if (value && value->IsInt())
        return value->GetInt();
    if (value)
        report(step(object, name), anInteger, describeNoInteger(*value));
    return 0;
}

double Checker::readNumber(const Place &object, const char *name) {
    const auto *value = find(object, name, aNumber);
    if (value && value->IsNumber())
        return value->GetDouble();
    if (value)
        report(step(object, name), aNumber, describeFound(*value));
    return 0.0;
}

// Up to the first zero character, as the library keeps it.
std::string Checker::readString(const Place &object, const char *name) {
    const auto *value = find(object, name, aString);
    if (value && value->IsString())
        return value->GetString();
    if (value)
        report(step(object, name), aString, describeFound(*value));
    return {};
}

template <typename Read>
void Checker::readObjects(const Place &object, const char *name, Read read) {
    const auto *value = find(object, name, anArray);
    if (!value)
        return;
    if (!value->IsArray()) {
        report(step(object, name), anArray, describeFound(*value));
        return;
    }
    for (rapidjson::SizeType i = 0; i < value->Size(); ++i) {
        const Place element{(*value)[i], step(object, name) + "/" + std::to_string(i)};
        if (element.value.IsObject())
            read(element);
        else
            report(element.pointer, anObject, describeFound(element.value));
    }
}

PanelEntry Checker::readPanel(const Place &panel) {
    PanelEntry entry;
    entry.panelID = readInteger(panel, "panelID");
    entry.centroidX = readInteger(panel, "centroidX");
    entry.centroidY = readInteger(panel, "centroidY");
    return entry;
}

DeviceEntry Checker::readDevice(const Place &device) {
    DeviceEntry entry;
    readObjects(device, "panels",
                [&](const Place &panel) { entry.panels.push_back(readPanel(panel)); });
    entry.scaleFactor = readNumber(device, "scaleFactor");
    entry.shapeType = readInteger(device, "shapeType");
    entry.ip = readString(device, "ip");
    entry.controlVersion = readInteger(device, "controlVersion");
    return entry;
}

Document Checker::readDocument(const rapidjson::Value &root) {
    Document document;
    const Place top{root, ""};
    if (!root.IsObject()) {
        report(top.pointer, anObject, describeFound(root));
        return document;
    }
    document.displayID = readInteger(top, "displayID");
    document.mode = readInteger(top, "mode");
    readObjects(top, "devices",
                [&](const Place &device) { document.devices.push_back(readDevice(device)); });
    return document;
}

Document check(const rapidjson::Value &root, std::vector<Problem> &problems) {
    return Checker(problems).readDocument(root);
}

} // namespace config
