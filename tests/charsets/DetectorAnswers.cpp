#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "platform/CharsetDetector.h"
#include "platform/MarkupStripper.h"
#include "platform/Results.h"
#include "platform/posix/DetectorEngines.h"
#include "platform/posix/TextJudgement.h"

/// @file
/// What the detector answers for files: their names come as lines of standard input, and a line
/// "code page, tab, confidence" goes out for each; 0 and 0 without an answer.
///
/// With --evidence the line has what the confidence is made of: the code page, the margin, the
/// bytes from 128 up, the bits for each, whether uchardet and ICU agree, and ICU's confidence.

namespace {

using namespace Kestra;
using namespace Kestra::Base;

std::uint32_t PrintAnswer(const std::string& bytes) {
    DetectedCharset detected;
    std::uint32_t count = 0;
    const std::uint32_t result = CharsetDetector::Detect(bytes.data(), bytes.size(), &detected, &count);
    if (count == 0)
        detected = {};
    std::cout << detected.code << '\t' << detected.confidence << '\n';
    return result;
}

std::uint32_t PrintEvidence(const std::string& bytes) {
    const std::string text = StripMarkup(bytes);
    EngineAnswer icu;
    EngineAnswer uchardet;
    std::uint32_t result = text.empty() ? RESULT_OK : AskIcu(text, &icu);
    if (result == RESULT_OK && !text.empty())
        result = AskUchardet(text, &uchardet);
    const Judgement judgement = JudgeText(text, icu, uchardet);
    const Evidence& evidence = judgement.evidence;
    std::cout << judgement.code << '\t' << evidence.margin << '\t' << evidence.highBytes << '\t' << evidence.bitsPerByte
              << '\t' << evidence.uchardetAgrees << '\t' << evidence.icuAgrees << '\t' << evidence.icuConfidence
              << '\n';
    return result;
}

}  // namespace

int main(int count, char** arguments) {
    const bool isEvidence = count > 1 && std::strcmp(arguments[1], "--evidence") == 0;
    for (std::string path; std::getline(std::cin, path);) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        const std::uint32_t result = isEvidence ? PrintEvidence(bytes) : PrintAnswer(bytes);
        if (!file.is_open() || result != RESULT_OK) {
            std::cerr << path << ": no answer, result " << result << '\n';
            return 1;
        }
    }
    return 0;
}
