# Sourced by the other scripts: the Debian packages that they need.

library_packages="libblocksruntime-dev rapidjson-dev libcli11-dev libcpp-httplib-dev libpng-dev
    libgtest-dev libcmark-dev libbenchmark-dev libxcb1-dev libxcb-randr0-dev libxcb-shm0-dev
    libxcb-damage0-dev libxcb-xfixes0-dev libwayland-dev wayland-protocols"
build_packages="build-essential clang llvm libclang-rt-14-dev cmake ninja-build pkg-config
    librust-wayland-protocols-dev $library_packages"
screen_packages="xvfb x11-utils x11-xserver-utils"
# server_packages: prints the packages of the tests' X server, which MIRROR_TEST_SERVER names.
server_packages() {
    case ${MIRROR_TEST_SERVER:-xvfb} in
    xvfb) ;;
    xvnc) echo tigervnc-standalone-server ;;
    xorg) echo xserver-xorg-core xserver-xorg-video-dummy ;;
    *)
        echo "The server for tests is xvfb, xvnc or xorg, not $MIRROR_TEST_SERVER." >&2
        return 64
        ;;
    esac
}
# A Wayland session with an X server in it, and authorisation for X servers; the compositor that tests
# draw on, and an independent program that captures it.
session_packages="cage xwayland xauth sway grim"
manual_packages="mandoc zsh doxygen"
format_packages="clang-format-14 git"
fault_packages="iproute2 locales"
analysis_packages="clang-tidy-14 cppcheck"
valgrind_packages="valgrind"
demo_packages="ffmpeg curl"
# For the programs that judge what lightbridge sends. OLA's package itself is unpacked, not installed.
judge_packages="libola1 tshark"
# For the example hosts. The JavaScript host uses the Node.js of page_packages.
host_packages="python3"
# For the tests of our own Debian packages.
packaging_packages="lintian"
# For the example hosts in other compiled languages. Installed compilers need not be Debian's.
language_packages="libjna-java"
command -v go >/dev/null || language_packages="$language_packages golang-go"
command -v rustc >/dev/null || language_packages="$language_packages rustc"
command -v javac >/dev/null || language_packages="$language_packages default-jdk-headless"
# For the live page's tests. A Node.js that is not Debian's includes npm.
page_packages="chromium"
command -v npm >/dev/null || page_packages="$page_packages npm"
# The packages of library_packages for arm64 are not installed: scripts/arm64-sysroot.
arm64_packages="binutils-aarch64-linux-gnu qemu-user-static"
macos_packages="clang-19 lld-19 llvm-19 googletest python3 ruby"

# missing PACKAGE...: prints the packages that are not installed.
missing() {
    for package in "$@"; do
        case $(dpkg-query -W -f='${Status}' "$package" 2>/dev/null) in
        *' installed') ;;
        *) printf ' %s' "$package" ;;
        esac
    done
}

# need PACKAGE...: installs missing packages; the only prompt is for sudo's password.
updated=
need() {
    wanted=$(missing "$@")
    [ -n "$wanted" ] || return 0
    as_root=
    [ "$(id -u)" -eq 0 ] || as_root=sudo
    echo "Installing:$wanted"
    [ -n "$updated" ] || $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    updated=yes
    # Waits if another script is installing packages.
    # shellcheck disable=SC2086
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        -o DPkg::Lock::Timeout=300 $wanted >/dev/null
}
