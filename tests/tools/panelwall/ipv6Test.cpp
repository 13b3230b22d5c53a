#include "tests/tools/panelwall/wallSetup.h"

using namespace test;
using PanelwallIpv6 = WallTest;

TEST_F(PanelwallIpv6, HearsBothPorts) {
    Process wall = start({writeConfig(
        {deviceText("::1", 1, {{3, 100, 100}}), deviceText("::1", 2, {{258, 300, 100}})})});
    wall.waitFor("listening: device 1 at \"::1\", UDP port 60222");
    sendTo("::1", 60221, {1, 3, 1, 10, 20, 30, 0, 5});
    sendTo("::1", 60222, {0, 1, 1, 2, 9, 8, 7, 0, 0, 5});
    wall.waitFor("device 0  [::1]:60221  1/1 lit");
    wall.waitFor("device 1  [::1]:60222  1/1 lit");
    end(wall);
}
