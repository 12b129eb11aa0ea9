#pragma once

// Start-up and shutdown of a session, and the workspace (the documents open at the last exit).
namespace modMain {

void Initialise();
void Finalise();
void LoadInitialFiles();
void LoadWorkingFiles();
void SaveWorkingFiles();

} // namespace modMain
