// A saved project file opened the way the program loads it, for tests that check or prepare
// what a command finds in the file.
#pragma once

#include "core/Model.h"
#include "core/ProjectFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace tg::test {

// A model holding the project file at `path` as its only project.
inline std::unique_ptr<Model> loadProjectFile(const std::string& path)
{
    auto model = std::make_unique<Model>();
    const std::filesystem::path file(path);
    ProjectLoadOutcome outcome;
    std::string message;
    EXPECT_TRUE(loadProjects(*model, file.parent_path().string(), {file.filename().string()}, {},
                             outcome, message))
        << message;
    return model;
}

// Loads the project file at `path`, applies `change` and saves it in place.
inline void changeProjectFile(const std::string& path, const std::function<void(Project&)>& change)
{
    const std::unique_ptr<Model> model = loadProjectFile(path);
    ASSERT_EQ(model->projectCount(), 1);
    change(model->project(0));
    std::string message;
    ASSERT_TRUE(saveProjectAgain(model->project(0), message)) << message;
}

} // namespace tg::test
