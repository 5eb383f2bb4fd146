#include "html/framework/Attribute.h"

namespace Kestra::HTML {

KESTRA_HTML_INSTANTIATE(Attribute);

}  // namespace Kestra::HTML
