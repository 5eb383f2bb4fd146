#pragma once

#include <cstdint>

#include "html/stateless/Events.h"
#include "html/stateless/Scan.h"
#include "platform/CharSetConverter.h"
#include "platform/Observable.h"

namespace Kestra::HTML::Stateless {

/// The main machine: reads text, finds out what a "<" begins, and causes the event of each
/// construct. Not installed.
class Machine {
public:
    /// All are borrowed.
    Machine(Data* newRecord, Base::MultiDelegate* delegate, StringNS::CharSetConverter* converter)
        : data(*newRecord), events(newRecord, delegate, converter) {}

    /// Reads the piece that the record has from its cursor on.
    /// @return 0; 16 when it ends inside a construct; 701 to 703; 710; 711
    std::uint32_t Run();

private:
    std::uint32_t ParseText();
    std::uint32_t ParseAfterLessThan();
    std::uint32_t ParseAfterExclamationMark();
    std::uint32_t ParseAfterHyphen();
    std::uint32_t ParseContent();
    std::uint32_t FinishStartTag();
    std::uint32_t FinishStartTagAsText();
    std::uint32_t FinishContent();
    void RaiseContentEnd();
    template <typename Event>
    std::uint32_t Finish(std::uint32_t result, Event raiseEvent);

    Data& data;
    Events events;
};

}  // namespace Kestra::HTML::Stateless
