// How a verdict is told: as a table for people, as JSON, and by the exit code. The same in every command that judges.
#pragma once

#include <cstdio>

#include "tools/Json.h"
#include "tools/judge/Judgement.h"

namespace J4Tool {

/// "pass", "fail", "not judged", "left out".
const char* VerdictText(Judgement::Verdict verdict);

/// A table of the limits with their values, the verdict, and how many patches it is about.
void PrintJudgement(const Judgement& judgement, std::FILE* stream);

/// Title, source, verdict, how many patches rules cover, and the limits with their values and patches.
Json JudgementJson(const Judgement& judgement);

/// @throws ToolError unless the verdict is a pass
void RequirePass(const Judgement& judgement);

}  // namespace J4Tool
