#include "editing/FLKActionResult.h"

std::shared_ptr<FLKActionResult> FLKActionResult::resultWithAction(std::shared_ptr<FLKAction> action,
                                                                   std::shared_ptr<void> object) {
    return std::make_shared<FLKActionResult>(std::move(action), std::move(object));
}
