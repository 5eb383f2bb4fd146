#include "html/stateless/Comments.h"

namespace Kestra::HTML::Stateless {

namespace {

enum CommentState : std::uint32_t { COMMENT_BODY = 0, COMMENT_HYPHEN = 1, COMMENT_TWO_HYPHENS = 2 };

}  // namespace

void InitCommentTagParser(Data& data) {
    data.commentState = COMMENT_BODY;
    data.identifier.clear();
}

//  state    "-"                  ">"                 other
//  0 body   to 1                 keep                keep
//  1 "-"    to 2                 keep, to 0 (kept)   keep, to 0 (kept)
//  2 "--"   "---", to 0 (kept)   complete            "--", keep, to 0
//
// So a hyphen that no other one follows is lost. A comment is complete with its piece (kept).
std::uint32_t ParseCommentTag(Data& data) {
    while (!AtEnd(data)) {
        switch (static_cast<CommentState>(data.commentState)) {
            case COMMENT_BODY:
                if (!AppendRun(data, CountUntilByte(data, '-'), &data.identifier))
                    return STATELESS_LIMIT_EXCEEDED;
                if (!AtEnd(data)) {
                    Consume(data);
                    data.commentState = COMMENT_HYPHEN;
                }
                break;
            case COMMENT_HYPHEN:
                if (Next(data) == '-') {
                    Consume(data);
                    data.commentState = COMMENT_TWO_HYPHENS;
                } else {
                    data.identifier += static_cast<char>(Next(data));
                    ConsumeContent(data);
                    data.commentState = COMMENT_BODY;
                }
                break;
            case COMMENT_TWO_HYPHENS:
                if (Next(data) == '>') {
                    Consume(data);
                    return STATELESS_OK;
                }
                data.identifier += "--";
                data.identifier += static_cast<char>(Next(data));
                ConsumeContent(data);
                data.commentState = COMMENT_BODY;
                break;
        }
    }
    return STATELESS_OK;
}

}  // namespace Kestra::HTML::Stateless
