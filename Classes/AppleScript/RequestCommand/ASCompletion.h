#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Platform/Base/Export.h"

namespace zqcore {

class ASResponseModel;

/// The way back of one request: called with the response, of any type, by the handler.
/// Threads: any. Lifetime: copies share one answer; it may outlive the command. Failure: the first call wins,
/// and every later one, on whichever copy, does nothing. A null response counts as an internal error.
class ZQ_EXPORT ASCompletion final {
  public:
    using Answer = std::function<void(std::shared_ptr<ASResponseModel>)>;

    explicit ASCompletion(Answer answer) : answer_(std::make_shared<const Answer>(std::move(answer))) {}

    void operator()(std::shared_ptr<ASResponseModel> response) const {
        if (*answer_) (*answer_)(std::move(response));
    }

  private:
    std::shared_ptr<const Answer> answer_;
};

}  // namespace zqcore
