#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>

#include "codegen/entity_writer.h"
#include "codegen/model_file.h"

namespace orvane::codegen {

namespace {

constexpr const char* help = R"(Usage: orvane-codegen MODEL.momd FOLDER [options]

Writes, for each entity of the model that names a class, the class's generated base and its key tables:
for the class Note the files _note.h, _note.cpp, note_keys.h and note_keys.cpp. The class itself is yours to
write, in note.h, over the base _Note.

Options:
  --namespace NAME       namespace of the classes (default: orvane)
  --export-macro NAME    macro put before every class and table, for those that leave a shared library
  --include-prefix PATH  folder named in #include before the files above and before the class's own header
  --internal             for the library's own build: include the library's headers from its source tree
  --help                 show this text

Exit codes: 0 written, 1 the model or a file is at fault, 2 wrong usage.
)";

struct Arguments {
    std::vector<std::string> places;
    WriterOptions options;
    bool wantsHelp = false;
};

/// None, after saying why, for a command line that makes no sense.
std::optional<Arguments> parse(std::span<char*> words) {
    Arguments result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        std::string* value = nullptr;
        if (word == "--help" || word == "-h") {
            result.wantsHelp = true;
            return result;
        }
        if (word == "--namespace") value = &result.options.nameSpace;
        if (word == "--export-macro") value = &result.options.exportMacro;
        if (word == "--include-prefix") value = &result.options.includePrefix;
        if (value) {
            if (++i == words.size()) {
                std::cerr << "orvane-codegen: " << word << " needs a value\n";
                return std::nullopt;
            }
            *value = words[i];
        } else if (word == "--internal") {
            result.options.internal = true;
        } else if (word.starts_with("-")) {
            std::cerr << "orvane-codegen: unknown option " << word << "; see --help\n";
            return std::nullopt;
        } else {
            result.places.emplace_back(word);
        }
    }
    if (result.places.size() == 2 && !result.options.nameSpace.empty()) return result;
    std::cerr << "orvane-codegen: expected a model and an output folder; see --help\n";
    return std::nullopt;
}

void writeFile(const std::filesystem::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (!stream) throw ModelError(file.string() + ": cannot be written");
}

void generate(const Arguments& arguments) {
    const Model model = readModel(arguments.places[0]);
    const std::filesystem::path folder = arguments.places[1];
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw ModelError(folder.string() + ": " + error.message());
    for (const Entity& entity : model.entities) {
        const EntityWriter writer(model, entity, arguments.options);
        const std::string name = snakeCase(entity.className);
        writeFile(folder / ("_" + name + ".h"), writer.baseHeader());
        writeFile(folder / ("_" + name + ".cpp"), writer.baseSource());
        writeFile(folder / (name + "_keys.h"), writer.keysHeader());
        writeFile(folder / (name + "_keys.cpp"), writer.keysSource());
    }
}

}  // namespace

}  // namespace orvane::codegen

int main(int argc, char** argv) {
    using namespace orvane::codegen;
    const auto arguments = parse(std::span(argv, static_cast<std::size_t>(argc)).subspan(argc > 0 ? 1 : 0));
    if (!arguments) return 2;
    if (arguments->wantsHelp) {
        std::cout << help;
        return 0;
    }
    try {
        generate(*arguments);
    } catch (const std::exception& error) {
        std::cerr << "orvane-codegen: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
