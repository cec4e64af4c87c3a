# Sourced by the scripts: installs the Debian packages the build needs that this machine lacks.
TETHEROFFLOAD_PACKAGES=(
    cmake g++ make clang-format clang libclang-rt-dev hidl-gen blueprint-tools
    libgtest-dev libgmock-dev
    android-liblog-dev android-libutils-dev android-libcutils-dev
    nlohmann-json3-dev libedit-dev
    libbenchmark-dev rapidjson-dev libzip-dev
)

install_missing_packages() {
    local missing=()
    local pkg
    for pkg in "${TETHEROFFLOAD_PACKAGES[@]}"; do
        if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
            missing+=("$pkg")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return 0
    fi
    echo "Installing: ${missing[*]}"
    local sudo=""
    if [ "$(id -u)" -ne 0 ]; then
        sudo="sudo"
    fi
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# configure_tree DIR COMPILER [cmake options...]: configures DIR with that C++ compiler. CMake
# cannot switch the compiler of a configured tree (it would start over without the other
# options), so a tree made with another one is removed first. Every script configures build/ with
# g++, so that they share it.
configure_tree() {
    local dir="$1" compiler="$2"
    local cache="$TETHEROFFLOAD_ROOT/$dir/CMakeCache.txt" cached=""
    shift 2
    if [ -f "$cache" ]; then
        cached="$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$cache")"
        if [ "$(command -v "$cached")" != "$(command -v "$compiler")" ]; then
            rm -rf "${TETHEROFFLOAD_ROOT:?}/$dir"
        fi
    fi
    # Named only for a new tree: naming it again makes CMake rewrite the cache entry.
    if [ ! -f "$cache" ]; then
        set -- -DCMAKE_CXX_COMPILER="$compiler" "$@"
    fi
    cmake -S "$TETHEROFFLOAD_ROOT" -B "$TETHEROFFLOAD_ROOT/$dir" "$@" >/dev/null
}

# configure_and_build DIR COMPILER [cmake options...]: configures, then builds incrementally.
configure_and_build() {
    configure_tree "$@"
    cmake --build "$TETHEROFFLOAD_ROOT/$1" -j "$(nproc)"
}
