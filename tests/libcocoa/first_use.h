// tests/libcocoa/first_use.h - what several threads of a program ask the colour classes first.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum { kFirstQuestions = 4 };

// Asks the question of that number, from 0: for the lists of the system, for a colour by its name, for a
// named colour's value, for a colour in a space. 1 if there is an answer.
int AskFirst(int question);

#ifdef __cplusplus
}
#endif
