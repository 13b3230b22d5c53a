#include "tests/endToEnd/paletteRun.h"

namespace test {

PaletteForecast::PaletteForecast(const std::vector<LightSetup> &lights_, unsigned seed)
    : lights(lights_), random(seed) {
    for (const LightSetup &light : lights)
        left.emplace_back(light.panels.size(), 0);
}

std::vector<std::vector<PaletteForecast::Change>> PaletteForecast::tick() {
    std::vector<std::vector<Change>> all;
    for (std::size_t d = 0; d < lights.size(); ++d) {
        std::vector<Change> changes;
        for (std::size_t p = 0; p < left[d].size(); ++p) {
            if (left[d][p] == 0) {
                left[d][p] = 10 + random.draw() % 5;
                const int id =
                    lights[d].panels[p].id & (lights[d].controlVersion == 1 ? 0xff : 0xffff);
                changes.push_back({id, left[d][p], 0});
            }
            --left[d][p];
        }
        for (Change &change : changes)
            change.colourDraw = random.draw();
        all.push_back(changes);
    }
    return all;
}

std::vector<Record> recordsOf(const std::vector<PaletteForecast::Change> &changes,
                              const Palette &palette) {
    std::vector<Record> records;
    for (const PaletteForecast::Change &change : changes)
        records.push_back({change.id,
                           palette[static_cast<std::size_t>(change.colourDraw) % palette.size()], 0,
                           change.hold});
    return records;
}

} // namespace test
