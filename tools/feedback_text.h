// feedback_text.h: the library's feedback in words.
#ifndef TAVELL_TOOLS_FEEDBACK_TEXT_H
#define TAVELL_TOOLS_FEEDBACK_TEXT_H

#include <string>
#include <vector>

#include <tavell/ICircuit.h>

/// One sentence per message of the circuit's last solve. Nodes and elements are called by their meta strings.
std::vector<std::string> feedbackTexts(Velcor::Tavell::ICircuit& circuit);

#endif
