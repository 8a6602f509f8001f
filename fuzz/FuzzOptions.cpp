// The command line's parser: the input's lines are the arguments.
#include "Options.h"
#include "Problem.h"
#include "Require.h"

#include <algorithm>
#include <set>

namespace {

std::vector<std::string> SplitLines(const std::uint8_t* bytes, std::size_t count) {
    std::vector<std::string> lines(1, "gif89");
    bool opens = true;
    for (const std::uint8_t* byte = bytes; byte < bytes + count; ++byte) {
        if (*byte == 0) continue; // ends an argument, and so is never part of one
        if (opens) lines.emplace_back();
        opens = *byte == '\n';
        if (!opens) lines.back() += static_cast<char>(*byte);
    }
    return lines;
}

void CheckRanges(const gif89::Options& options) {
    const auto isIn = [](int number, int least, int most) {
        return number >= least && number <= most;
    };
    Require(isIn(options.wishes.colors.value_or(2), 2, 256), "the number of colours is in range");
    Require(isIn(options.wishes.alphaThreshold, 0, 255), "the threshold is in range");
    Require(isIn(options.required.largestError.value_or(0), 0, 255), "the error is in range");
}

void CheckInputs(const gif89::Options& options, const std::vector<std::string>& arguments) {
    const std::multiset<std::string> given(arguments.begin() + 1, arguments.end());
    for (const std::string& input : options.inputs)
        Require(given.count(input) > 0, "inputs are arguments");
    if (options.help || options.version || options.about) return;
    Require(!options.inputs.empty(), "there is an input");
    Require(std::count(options.inputs.begin(), options.inputs.end(), "-") <= 1,
            "standard input is read once");
    Require(options.output.empty() || options.outputFolder.empty(), "there is one destination");
    Require(options.output.empty() || options.inputs.size() == 1, "one file takes one input");
}

// Names an option or value of which some argument tells, and nothing that nobody typed.
void CheckSentence(const std::string& sentence, const std::vector<std::string>& arguments) {
    Require(!sentence.empty(), "a refusal has a reason");
    for (const char character : sentence) {
        const bool isPlain = character >= ' ' && character <= '~';
        Require(isPlain || std::any_of(arguments.begin(), arguments.end(),
                                       [&](const std::string& argument) {
                                           return argument.find(character) != std::string::npos;
                                       }),
                "a sentence has no characters but letters and those that were typed");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    const std::vector<std::string> arguments = SplitLines(bytes, count);
    std::vector<std::string> copies = arguments;
    std::vector<char*> pointers;
    for (std::string& copy : copies) pointers.push_back(copy.data());
    pointers.push_back(nullptr);
    try {
        const gif89::Options options =
            gif89::ParseOptions(static_cast<int>(copies.size()), pointers.data());
        CheckRanges(options);
        CheckInputs(options, arguments);
    } catch (const gif89::Problem& problem) {
        Require(problem.Code() == gif89::kUsage, "a refusal is one of wrong usage");
        CheckSentence(problem.what(), arguments);
    }
    return 0;
}
