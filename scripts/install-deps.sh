#!/usr/bin/env bash
# Installs every Debian package Tonegrabber needs to build, test and run its demo.
# Idempotent: safe to run again; apt skips what is already there.
set -euo pipefail

if [ "$(id -u)" -ne 0 ]; then
    SUDO=sudo
else
    SUDO=
fi

packages=(
    # toolchain
    build-essential cmake ninja-build pkg-config git clang libclang-rt-14-dev
    # libraries the program links
    qtbase5-dev qttools5-dev-tools libcli11-dev nlohmann-json3-dev libsoxr-dev libzip-dev
    portaudio19-dev libjack-jackd2-dev libasound2-dev librtmidi-dev libfluidsynth-dev liblilv-dev lv2-dev
    # the LV2 instruments the hosted-instrument tests bounce (MDA ePiano and friends)
    mda-lv2
    # tests: frameworks, third-party readers and the real sound chain
    libgtest-dev libgmock-dev libbenchmark-dev libsndfile1-dev sndfile-programs
    unzip libxml2-utils jackd2 fluidsynth fluid-soundfont-gm sox
    # the desktop program on a virtual display: Xvfb, key presses, window lookup, screenshots
    xvfb xdotool x11-utils imagemagick
)

export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${packages[@]}" >/dev/null
echo "install-deps: all packages present"
