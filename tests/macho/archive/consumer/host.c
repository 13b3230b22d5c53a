#include "mirror/mirrorInterface.h"

int mirror(char *json);

int mirror(char *json) {
    return setMirrorConfig(json) == 1 ? startMirror() : 0;
}
