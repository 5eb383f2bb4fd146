#pragma once

#include <cstddef>

#include "html/framework/TokenPlace.h"
#include "html/stateless/StatelessHTMLParser.h"
#include "platform/Vector.h"

namespace Kestra::Tool {

/// Where the constructs lie that the events of a stateless parser report.
///
/// A construct begins where the event before it left the parser, and ends where the parser is in
/// its own event. The end of the document is where the parser is: text after the last tag lies
/// between the two.
class EventPlaces {
public:
    /// @param observedParser  borrowed; asked in each callback where it is
    explicit EventPlaces(const HTML::StatelessHTMLParser* observedParser);

    /// In the callback of each event, once: its place. Lines and columns are as the parser counts
    /// them.
    HTML::TokenPlace TakeConstruct();
    /// The same for the end of the document.
    HTML::TokenPlace TakeEnd();
    /// In the callback of an event with so many attributes: their places.
    Vector<HTML::AttributePlace> GetAttributes(std::size_t count) const;

private:
    const HTML::StatelessHTMLParser* parser;
    HTML::TokenPlace reached;  ///< its end is where it begins
};

}  // namespace Kestra::Tool
