# Sourced by the scripts: installs the Debian packages the build needs that this machine lacks.
TETHEROFFLOAD_PACKAGES=(
    cmake g++ make clang-format clang libclang-rt-dev hidl-gen
    libgtest-dev libgmock-dev
    android-liblog-dev android-libutils-dev android-libcutils-dev
    nlohmann-json3-dev libedit-dev
    libbenchmark-dev
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

# configure_and_build DIR [cmake options...]: configures once, then builds incrementally.
configure_and_build() {
    local dir="$1"
    shift
    cmake -S "$TETHEROFFLOAD_ROOT" -B "$TETHEROFFLOAD_ROOT/$dir" "$@" >/dev/null
    cmake --build "$TETHEROFFLOAD_ROOT/$dir" -j "$(nproc)"
}
