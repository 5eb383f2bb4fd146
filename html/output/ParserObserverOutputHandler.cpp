#include "html/output/ParserObserverOutputHandler.h"

namespace Kestra::HTML {

ParserObserverOutputHandler::ParserObserverOutputHandler() = default;

ParserObserverOutputHandler::ParserObserverOutputHandler(const ParserObserverOutputHandler&) = default;

ParserObserverOutputHandler& ParserObserverOutputHandler::operator=(const ParserObserverOutputHandler&) = default;

ParserObserverOutputHandler::~ParserObserverOutputHandler() = default;

void ParserObserverOutputHandler::Write(const void*, std::uint64_t, bool) {}

}  // namespace Kestra::HTML
