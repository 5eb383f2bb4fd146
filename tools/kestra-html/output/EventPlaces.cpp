#include "tools/kestra-html/output/EventPlaces.h"

#include <cstddef>

namespace Kestra::Tool {

EventPlaces::EventPlaces(const HTML::StatelessHTMLParser* observedParser) : parser(observedParser) {}

HTML::TokenPlace EventPlaces::TakeConstruct() {
    HTML::TokenPlace place = reached;
    TakeEnd();
    place.end = reached.begin;
    return place;
}

HTML::TokenPlace EventPlaces::TakeEnd() {
    std::size_t line = 0;
    std::size_t column = 0;
    parser->GetCurrentOffset(&reached.begin);
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
    reached.end = reached.begin;
    reached.line = line;
    reached.column = column;
    return reached;
}

Vector<HTML::AttributePlace> EventPlaces::GetAttributes(std::size_t count) const {
    Vector<HTML::AttributePlace> places;
    for (std::size_t i = 0; i < count; ++i) {
        HTML::AttributePlace place;
        parser->GetAttributePlace(i, &place);
        places.push_back(place);
    }
    return places;
}

}  // namespace Kestra::Tool
