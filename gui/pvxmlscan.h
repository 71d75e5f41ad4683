// Nesting check run on an XML text before it is parsed: the parser descends
// one call level per nested element, so a hostile file nested thousands of
// levels deep would exhaust the stack. The check follows the parser's own
// lexical rules (comments, CDATA, declarations, quoted attribute values) so
// that nothing it hides can lower the count; where the rules cannot be
// followed exactly the text is refused.
#ifndef PEVRANO_GUI_PVXMLSCAN_H
#define PEVRANO_GUI_PVXMLSCAN_H

// True when no element of text (up to its first NUL) is nested deeper than
// maxDepth and every declaration has the plain shape <?xml name="value" ...?>.
bool pvXmlNestingWithin(const char* text, unsigned int maxDepth);

#endif
