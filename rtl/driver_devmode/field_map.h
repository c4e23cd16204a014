// Every setting by name, in XML, for any DEVMODE. (TQVDM offers the same for the product's own
// blocks.)
#pragma once

#include <windows.h>

#include "qv_api.h"
#include "xml/xml_node.h"

// Writes every public field of `dm` as a child of `node` named after it. Fields that a dmSize below
// 220 excludes are left out, so that a short block is never read past its end.
QV_API void DevModeToXmlNode(DEVMODEW* dm, TXmlNode* node);

// Sets public fields of any DEVMODE from the children of `node`; the previous values go into
// `result` when it is given. Private and unknown names are ignored, and so are fields that a dmSize
// below 220 excludes.
QV_API void XmlNodeToDevMode(TXmlNode* node, DEVMODEW* dm, TXmlNode* result);
