# CLI11 and nlohmann/json as the target HeaderLibraries. They are reached through links in the build folder, since the
# folder that they are installed in holds the host's C library too, which a cross compiler must not see.
find_path(CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
find_path(JSON_INCLUDE nlohmann/json.hpp REQUIRED)
set(links ${PROJECT_BINARY_DIR}/include)
file(MAKE_DIRECTORY ${links})
file(CREATE_LINK ${CLI11_INCLUDE}/CLI ${links}/CLI SYMBOLIC)
file(CREATE_LINK ${JSON_INCLUDE}/nlohmann ${links}/nlohmann SYMBOLIC)
add_library(HeaderLibraries INTERFACE)
target_include_directories(HeaderLibraries SYSTEM INTERFACE ${links})
