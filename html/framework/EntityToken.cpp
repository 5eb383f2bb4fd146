#include "html/framework/EntityToken.h"

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

KESTRA_HTML_INSTANTIATE_STRUCT(EntityToken);

}  // namespace Kestra::HTML
