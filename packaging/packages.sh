# shellcheck shell=sh
# What the scripts share: Debian packages and builds. To be sourced.

# need PACKAGE...: installs the packages that are missing, and says so first.
need() {
    command -v apt-get >/dev/null || return 0 # another system: the build tells what it misses
    missing=
    for package; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' ||
            missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    as_root=
    [ "$(id -u)" -eq 0 ] || as_root=sudo
    echo "Installing with apt-get:$missing" >&2
    # shellcheck disable=SC2086 # a list of words
    {
        $as_root apt-get -qq update
        $as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get -qq install -y --no-install-recommends $missing
    } >&2 </dev/null
}

# build_preset ROOT PRESET: configures once, then builds what has changed.
build_preset() {
    (
        cd "$1" || exit
        [ -f "build/$2/build.ninja" ] || cmake --preset "$2" || exit
        cmake --build --preset "$2"
    ) >&2 </dev/null
}
