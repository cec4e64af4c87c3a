# cmake -DHEADERS="a.h;b.h" -DDESTINATION=dir -P HidlGenInstall.cmake
# Puts the headers hidl-gen wrote on the include path. Debian's hidl-gen (Android 10) declares
# the value lists of enums (`template<> constexpr std::array<...> hidl_enum_values<E>`) without
# the `inline` that Android 12's adds; clang gives such a specialisation external linkage, so a
# list defined in every translation unit that includes its types.h would fail to link. Adding
# the `inline` is the only change made.
foreach(header ${HEADERS})
    file(READ ${header} text)
    string(REPLACE "template<> constexpr std::array<" "template<> inline constexpr std::array<"
           text "${text}")
    get_filename_component(name ${header} NAME)
    file(WRITE ${DESTINATION}/${name} "${text}")
endforeach()
