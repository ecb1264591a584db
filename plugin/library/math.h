// Arithmetic for scripts: tw_xmath (one operator on a variable in place), mathparse (a whole expression
// through the one process-wide muParser object, server variables as its variables) and tw_xrand. The
// expression conditions (ifx) evaluate through the same parser.
#pragma once

// Load step: the parser's "!" operator, its variable factory, the optimizer, and the word operators and,
// or, xor and the function if(c, a, b), which the library lacks.
void Math_OnLoad();
// LevelInit step: forgets every variable binding, so that a name is bound anew on the next map.
void Math_OnLevelInit();

// Evaluates an expression with the live float values of the variables it names, as a 32-bit float. A value
// that `=` assigns goes to the variable's float only, its text untouched. False after "Exception: %s!\n"
// at level 0 when the parser refuses the expression.
bool Math_Evaluate(const char* expression, float& result);
