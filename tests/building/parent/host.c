/* Passes the library a document without members. */
#include "mirror/mirrorInterface.h"

int main(void) {
    char config[] = "{}";
    return setMirrorConfig(config);
}
