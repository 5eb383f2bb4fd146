#include "html/framework/Attribute.h"

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

KESTRA_HTML_INSTANTIATE_STRUCT(Attribute);

}  // namespace Kestra::HTML
