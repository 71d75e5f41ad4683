// XML files as the engine reads them: whole, at most 16 MB, checked for
// nesting before they are parsed. The parser descends
// one call level per nested element, so a hostile file nested thousands of
// levels deep would exhaust the stack. The check follows the parser's own
// lexical rules (comments, CDATA, declarations, quoted attribute values) so
// that nothing it hides can lower the count; where the rules cannot be
// followed exactly the text is refused.
#ifndef PEVRANO_GUI_PVXMLSCAN_H
#define PEVRANO_GUI_PVXMLSCAN_H

#include <string>

class TiXmlDocument;

// True when no element of text (up to its first NUL) is nested deeper than
// maxDepth and every declaration has the plain shape <?xml name="value" ...?>.
bool pvXmlNestingWithin(const char* text, unsigned int maxDepth);

// The whole file into text; false when it cannot be read or is over 16 MB.
bool pvXmlReadFile(const char* path, std::string* text);

// Parses text (up to its first NUL) into document unless it nests more than
// 256 elements deep or breaks the declaration shape; a refused text leaves
// the document in the parser's error state for an empty document. True when
// the document parsed without error.
bool pvXmlParse(const std::string& text, TiXmlDocument* document);

#endif
