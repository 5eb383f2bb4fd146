#include "html/framework/EntityToken.h"

namespace Kestra::HTML {

KESTRA_HTML_INSTANTIATE(EntityToken);

}  // namespace Kestra::HTML
