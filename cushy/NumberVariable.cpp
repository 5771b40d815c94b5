#include "cushy/NumberVariable.h"

#include "cushy/CushyHost.h"
#include "cushy/VariableReading.h"

namespace tw {

double TextNumberVariable::read(double otherwise) { return variableNumber(host_.getVariable(view_, name_), otherwise); }

void TextNumberVariable::write(double value, bool continuous) {
    host_.setVariable(view_, name_, formatVariableNumber(value), continuous);
}

void TextNumberVariable::beginEnd(bool beginning) { host_.beginEnd(view_, name_, beginning); }

}  // namespace tw
