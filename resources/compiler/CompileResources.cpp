#include "CompileResources.h"

#include "StatementReader.h"

#include <fstream>
#include <iterator>

namespace gif89 {

namespace {

std::string ReadSource(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string source((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file.is_open() || file.bad())
        throw SourceError({path, 1}, "the file cannot be read, expected a resource text");
    return source;
}

void CheckReferences(const std::vector<Reference>& references, const ResourceFile& resources) {
    for (const Reference& reference : references)
        if (!resources.Has(reference.type, reference.id))
            throw SourceError(reference.place, "the item refers to " + TypeName(reference.type) +
                                                   " " + std::to_string(reference.id) +
                                                   ", expected one in these files");
}

} // namespace

Bytes CompileResources(const std::vector<std::string>& inputs, const Definitions& definitions) {
    ResourceFile resources;
    std::vector<Reference> references;
    for (const std::string& input : inputs) {
        Scanner scanner(input, ReadSource(input), definitions);
        ReadStatements(scanner, resources, references);
    }
    CheckReferences(references, resources);
    return resources.Write();
}

} // namespace gif89
