#include "mirror/screenMirrorMac.h"

static_assert(!__is_polymorphic(MirrorManager) && !__is_polymorphic(Device) &&
              !__is_polymorphic(UdpSocket) && sizeof(Panel) && sizeof(RGB) && sizeof(HSL));
