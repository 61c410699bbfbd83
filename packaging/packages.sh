# shellcheck shell=sh
# What the scripts share: Debian packages and builds. To be sourced.
# shellcheck disable=SC2034 # used there
companions_need='libcli11-dev libboost-dev gnuplot-nox'
python_need='libboost-dev python3-dev pybind11-dev python3-numpy'

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
        $as_root apt-get -qq update &&
            $as_root env DEBIAN_FRONTEND=noninteractive \
                apt-get -qq install -y --no-install-recommends $missing
    } >&2 </dev/null
}

# build_preset ROOT PRESET [PACKAGE...]: installs a compiler, CMake and these packages, configures
# what nobody has configured in this place, and builds what has changed. Of two at once, one waits.
build_preset() {
    (
        cd -P "$1" || exit
        shift
        folder=build/$1
        mkdir -p "$folder" 2>/dev/null || :
        [ -d build ] && top=build || top=.
        for place in "$top" build/lock "$folder" "$folder/.ninja_log"; do
            { [ ! -e "$place" ] || [ -w "$place" ]; } && continue
            configured "$folder" && ninja -C "$folder" -n | grep -q 'no work to do' && exit
            echo "${0##*/}: cannot write to $(realpath "$place"), which belongs to" \
                "$(stat -c %U "$place"); build as that user, or in a copy of the tree"
            exit 1
        done
        if command -v flock >/dev/null; then # held until the end of these parentheses
            exec 9>>build/lock
            flock -n 9 || { echo "${0##*/}: waiting for another build in $PWD" && flock 9; } || :
        fi
        install_and_build "$@" 9>&-
    ) >&2 </dev/null
}

# Is this folder configured for the tree where it lies?
configured() {
    [ -f "$1/build.ninja" ] && grep -qFx "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$1/CMakeCache.txt"
}

install_and_build() {
    preset=$1
    shift
    need g++ cmake ninja-build "$@" || exit
    configured "build/$preset" || cmake --fresh --preset "$preset" || exit
    cmake --build "build/$preset"
}
