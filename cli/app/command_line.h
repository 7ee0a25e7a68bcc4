// What headers need of CLI11, which takes seconds to read: files that define options include it themselves.
#pragma once

namespace CLI {
class App;
class Option;
}  // namespace CLI
