#include "tools/kestra-html/output/QueuedOutput.h"

#include <exception>
#include <utility>

namespace Kestra::Tool {

namespace {

constexpr std::size_t GATHERED_BYTES = std::size_t{64} * 1024;
constexpr std::size_t RESERVED_BYTES = GATHERED_BYTES + GATHERED_BYTES / 2;  // most lines fit the rest
constexpr std::size_t MOST_SPARES = 32;

}  // namespace

void QueuedOutput::Line(std::string_view line) {
    if (gathered.capacity() < GATHERED_BYTES)
        PrepareForLines();
    gathered.append(line).push_back('\n');
    if (gathered.size() >= GATHERED_BYTES)
        Finish();
}

void QueuedOutput::PrepareForLines() {
    {
        const std::lock_guard lock(queue->guard);
        if (!queue->spares.empty()) {
            gathered.swap(queue->spares.back());
            queue->spares.pop_back();
        }
    }
    gathered.reserve(RESERVED_BYTES);
}

/// Takes back the memory of lines; more than there is use for is freed.
void QueuedOutput::Recycle(std::deque<Part>* written) {
    const std::lock_guard lock(queue->guard);
    for (Part& part : *written) {
        if (part.kind != Kind::LINES || part.text.capacity() > 2 * RESERVED_BYTES ||
            queue->spares.size() == MOST_SPARES)
            continue;
        part.text.clear();
        queue->spares.push_back(std::move(part.text));
    }
}

void QueuedOutput::Diagnose(const std::string& inputName, std::string_view message) {
    HandOverAbout(Kind::DIAGNOSIS, inputName, message);
}

void QueuedOutput::DiagnoseAgain(const std::string& inputName, std::string_view message) {
    HandOverAbout(Kind::DIAGNOSIS_AGAIN, inputName, message);
}

void QueuedOutput::Remark(const std::string& inputName, std::string_view message) {
    HandOverAbout(Kind::REMARK, inputName, message);
}

void QueuedOutput::FlushBeforeWait() {
    Part part{Kind::LINES, {}, std::exchange(gathered, {})};
    try {
        if (!part.text.empty())
            HandOver(&part);
    } catch (const std::exception&) {
        gathered = std::move(part.text);  // for the next call, which says it
    }
}

void QueuedOutput::Advance(std::uint64_t bytesDone) {
    bytesOfInput = bytesDone;
}

void QueuedOutput::Finish() {
    if (gathered.empty())
        return;
    Part part{Kind::LINES, {}, std::exchange(gathered, {})};
    HandOver(&part);
}

/// What is said about an input comes after its lines so far.
void QueuedOutput::HandOverAbout(Kind kind, const std::string& inputName, std::string_view message) {
    Finish();
    Part part{kind, inputName, std::string(message)};
    HandOver(&part);
}

/// The next one has room of its own, so that it never waits for one after it.
bool QueuedOutput::HasRoom() const {
    return queue->next == this ? bytesKept < MOST_OF_NEXT : queue->bytesKept < MOST_BYTES;
}

/// The part stays as it is when that throws.
void QueuedOutput::HandOver(Part* part) {
    std::unique_lock lock(queue->guard);
    queue->changed.wait(lock, [this] { return queue->isStopped || HasRoom(); });
    if (queue->isStopped)
        throw OutputFailed("");
    const std::size_t size = part->text.size();
    parts.push_back(std::move(*part));
    bytesKept += size;
    queue->bytesKept += size;
}

void QueuedOutput::WriteTo(Console* console) {
    std::deque<Part> ready;
    {
        const std::lock_guard lock(queue->guard);
        ready.swap(parts);
        queue->bytesKept -= std::exchange(bytesKept, 0);
        queue->next = this;
    }
    queue->changed.notify_all();
    for (const Part& part : ready) {
        switch (part.kind) {
            case Kind::LINES:
                console->Bytes(part.text);
                break;
            case Kind::DIAGNOSIS:
                console->Diagnose(part.inputName, part.text);
                break;
            case Kind::DIAGNOSIS_AGAIN:
                console->DiagnoseAgain(part.inputName, part.text);
                break;
            case Kind::REMARK:
                console->Remark(part.inputName, part.text);
                break;
        }
    }
    if (!ready.empty())
        Recycle(&ready);
}

std::uint64_t QueuedOutput::GetBytesDone() const {
    return bytesOfInput;
}

void StopOutputs(OutputQueue* queue) {
    {
        const std::lock_guard lock(queue->guard);
        queue->isStopped = true;
    }
    queue->changed.notify_all();
}

}  // namespace Kestra::Tool
