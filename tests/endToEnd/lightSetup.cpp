#include "tests/endToEnd/lightSetup.h"
#include "tests/support/panelRecords.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <rapidjson/document.h>
#include <sstream>

namespace test {

namespace {

// The positions of a panel's 100 sample pixels. A panel may reach over any edge of the screen, but
// no centre is so far out that the square must be rebuilt.
std::vector<std::size_t> samplesOf(const LightSetup &light, const PanelPlace &panel,
                                   const Picture &picture) {
    const int r =
        static_cast<int>(light.scaleFactor * (light.shapeType == 0 ? 150.0 : 100.0) / 3.0);
    const int step = std::max(1, r / 5);
    const int left = std::clamp(panel.x - r, 0, picture.width - 1);
    const int top = std::clamp(panel.y - r, 0, picture.height - 1);
    const int right = std::min(left + 2 * r, picture.width - 1);
    const int bottom = std::min(top + 2 * r, picture.height - 1);
    std::vector<std::size_t> samples;
    for (int column = left; column <= right; column += step)
        for (int row = top; row <= bottom; row += step)
            samples.push_back(static_cast<std::size_t>(row * picture.width + column));
    const int centreX = std::clamp(panel.x, 0, picture.width - 1);
    const int centreY = std::clamp(panel.y, 0, picture.height - 1);
    samples.resize(100, static_cast<std::size_t>(centreY * picture.width + centreX));
    return samples;
}

std::uint32_t averageOf(const std::vector<std::size_t> &samples, const Picture &picture) {
    std::uint32_t average = 0;
    for (const int shift : {16, 8, 0}) {
        std::uint32_t sum = 0;
        for (const std::size_t sample : samples) {
            const std::uint32_t value = picture.pixels[sample] >> shift & 0xff;
            sum += value * value;
        }
        average |= static_cast<std::uint32_t>(std::sqrt(sum / 100)) << shift;
    }
    return average;
}

} // namespace

Picture plain(int width, int height, std::uint32_t colour) {
    return {width, height,
            std::vector<std::uint32_t>(static_cast<std::size_t>(width * height), colour)};
}

Picture noise(int width, int height, unsigned seed) {
    Picture picture = plain(width, height, 0);
    std::mt19937 random(seed);
    for (std::uint32_t &pixel : picture.pixels)
        pixel = static_cast<std::uint32_t>(random()) & 0xffffff;
    return picture;
}

std::string documentOf(std::uint32_t displayID, int mode, const std::vector<LightSetup> &lights) {
    std::ostringstream text;
    text << "{\"displayID\":" << displayID << ",\"mode\":" << mode << ",\"devices\":[";
    for (std::size_t d = 0; d < lights.size(); ++d) {
        const LightSetup &light = lights[d];
        text << (d ? "," : "") << "{\"ip\":\"" << light.ip
             << "\",\"controlVersion\":" << light.controlVersion
             << ",\"shapeType\":" << light.shapeType << ",\"scaleFactor\":" << light.scaleFactor
             << ",\"panels\":[";
        for (std::size_t p = 0; p < light.panels.size(); ++p)
            text << (p ? "," : "") << "{\"panelID\":" << light.panels[p].id
                 << ",\"centroidX\":" << light.panels[p].x << ",\"centroidY\":" << light.panels[p].y
                 << "}";
        text << "]}";
    }
    text << "]}";
    return text.str();
}

Datagram matchDatagram(const LightSetup &light, const Picture &picture) {
    std::vector<Record> records;
    for (const PanelPlace &panel : light.panels)
        records.push_back({panel.id, averageOf(samplesOf(light, panel, picture), picture), 0, 1});
    return encode(light.controlVersion, records);
}

testing::AssertionResult arrives(LightReceiver &receiver, const Datagram &wanted,
                                 const std::optional<Datagram> &earlier) {
    int torn = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
        const std::optional<Datagram> got = receiver.next();
        if (!got)
            return testing::AssertionFailure() << "nothing arrived";
        if (*got == wanted)
            return testing::AssertionSuccess();
        if (earlier && *got != *earlier && torn++ > 0)
            return testing::AssertionFailure()
                   << "a second datagram that is neither: " << testing::PrintToString(*got);
    }
    return testing::AssertionFailure() << "only other datagrams arrived";
}

std::vector<std::uint32_t> displayIDs() {
    std::vector<char> text(4096, 0);
    EXPECT_EQ(getDisplays(text.data(), static_cast<int>(text.size()) - 1), 1);
    rapidjson::Document document;
    document.Parse(text.data());
    std::vector<std::uint32_t> ids;
    for (const auto &display : document["displays"].GetArray())
        ids.push_back(display["displayID"].GetUint());
    return ids;
}

void OneLightRun::start(const std::string &text) {
    ASSERT_EQ(configure(text), 1);
    ASSERT_EQ(startMirror(), 1);
}

} // namespace test
