#include <CLI/CLI.hpp>
#include <fmt/core.h>

int main(int argc, char** argv) {
    CLI::App app{"Tallyrink: ice-hockey league simulation"};
    app.require_subcommand(0, 1);
    CLI11_PARSE(app, argc, argv);
    return 0;
}
