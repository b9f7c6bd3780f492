// Each group of commands registers itself on the application here.
#pragma once

namespace tg::cli {

class CliApp;

} // namespace tg::cli
