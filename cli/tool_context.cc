#include "cli/tool_context.h"

#include <iostream>  // the standard streams are set up before the endpoint

ToolContext toolContext;
