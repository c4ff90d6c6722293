#include "page/server.h"

#include <utility>  // Boost 1.74's Beast needs it with g++ 12

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <csignal>
#include <deque>
#include <fstream>
#include <iterator>
#include <map>
#include <string_view>

namespace page {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
using asio::ip::tcp;
using Request = http::request<http::string_body>;
using Response = http::response<http::string_body>;
using Error = beast::error_code;

constexpr std::size_t kMostWaiting = 256;  // messages that a viewer has not taken
constexpr std::chrono::milliseconds kFrame{16};

std::string_view view(beast::string_view text) { return {text.data(), text.size()}; }

}  // namespace

class Viewer;

class Server::Work {
 public:
    Work(int listening, Place place, std::string files, Handlers handlers)
        : place_(std::move(place)),
          files_(std::move(files)),
          handlers_(std::move(handlers)),
          acceptor_(context_, tcp::v4(), listening),
          signals_(context_, SIGINT, SIGTERM, SIGHUP) {
        signals_.async_wait([this](Error, int) { context_.stop(); });
        accept();
    }

    bool isMeant(const Request& request) const {
        return page::isMeant(place_, view(request[http::field::host]),
                             view(request[http::field::origin]));
    }
    bool knowsToken(std::string_view target) const { return page::knowsToken(place_, target); }
    Response answer(const Request& request) const;
    void add(int id, const std::shared_ptr<Viewer>& viewer) { viewers_[id] = viewer; }
    void remove(int id) {
        if (viewers_.erase(id) != 0) {
            handlers_.closed(id);
        }
    }

    void accept();
    void every(std::chrono::milliseconds period, const std::function<void()>& action) {
        const auto timer = std::make_shared<asio::steady_timer>(context_, period);
        timer->async_wait([this, timer, period, action](Error error) {
            if (!error) {
                action();
                every(period, action);
            }
        });
    }

    const Place place_;
    const std::string files_;
    Handlers handlers_;
    asio::io_context context_{1};
    tcp::acceptor acceptor_;
    asio::signal_set signals_;
    asio::steady_timer retry_{context_};
    std::map<int, std::shared_ptr<Viewer>> viewers_;
    int lastId_ = 0;
};

/// One socket of a viewer: what is said to it goes in order, and the state when there is room.
class Viewer : public std::enable_shared_from_this<Viewer> {
 public:
    Viewer(tcp::socket socket, Server::Work& work, int id)
        : stream_(std::move(socket)), work_(work), id_(id), pause_(work.context_) {}

    void open(const Request& request) {
        stream_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::server));
        stream_.read_message_max(Server::kLargestMessage);
        stream_.async_accept(request, [self = shared_from_this()](Error error) {
            if (!error) {
                self->work_.add(self->id_, self);
                self->work_.handlers_.opened(self->id_);
                self->read();
                self->stateChanged();
            }
        });
    }
    void say(std::string text) {
        if (waiting_.size() >= kMostWaiting) {
            return close();
        }
        waiting_.push_back(std::move(text));
        write();
    }
    void stateChanged() {
        stateIsNew_ = true;
        write();
    }

 private:
    void read() {
        stream_.async_read(buffer_, [self = shared_from_this()](Error error, std::size_t) {
            if (error) {
                return self->close();
            }
            const std::string text = beast::buffers_to_string(self->buffer_.data());
            self->buffer_.clear();
            self->work_.handlers_.said(self->id_, text);
            self->read();
        });
    }
    void write() {
        if (isWriting_ || isClosed_) {
            return;
        }
        if (!waiting_.empty()) {
            sent_ = std::move(waiting_.front());
            waiting_.pop_front();
        } else if (stateIsNew_ && !isPausing_) {
            stateIsNew_ = false;
            sent_ = work_.handlers_.state(id_);
            pause();
        } else {
            return;
        }
        if (sent_.empty()) {
            return write();
        }
        isWriting_ = true;
        stream_.async_write(asio::buffer(sent_),
                            [self = shared_from_this()](Error error, std::size_t) {
                                self->isWriting_ = false;
                                return error ? self->close() : self->write();
                            });
    }
    void pause() {
        isPausing_ = true;
        pause_.expires_after(kFrame);
        pause_.async_wait([self = shared_from_this()](Error) {
            self->isPausing_ = false;
            self->write();
        });
    }
    void close() {
        if (!std::exchange(isClosed_, true)) {
            Error ignored;
            beast::get_lowest_layer(stream_).socket().close(ignored);
            work_.remove(id_);
        }
    }

    websocket::stream<beast::tcp_stream> stream_;
    Server::Work& work_;
    const int id_;
    beast::flat_buffer buffer_;
    std::deque<std::string> waiting_;
    std::string sent_;
    bool isWriting_ = false, isClosed_ = false;
    bool stateIsNew_ = false, isPausing_ = false;
    asio::steady_timer pause_;
};

namespace {

/// One connection until it has its file or has become a viewer.
class Connection : public std::enable_shared_from_this<Connection> {
 public:
    Connection(tcp::socket socket, Server::Work& work, int id)
        : stream_(std::move(socket)), work_(work), id_(id) {}

    void read() {
        constexpr std::chrono::seconds kPatience{30};
        constexpr std::size_t kLargestRequest = 16'384;
        parser_.emplace();
        parser_->body_limit(kLargestRequest);
        stream_.expires_after(kPatience);
        http::async_read(stream_, buffer_, *parser_,
                         [self = shared_from_this()](Error error, std::size_t) {
                             if (!error) {
                                 self->take(self->parser_->release());
                             }
                         });
    }

 private:
    void take(const Request& request) {
        const std::string_view target = view(request.target());
        const bool isSocket =
            websocket::is_upgrade(request) && target.substr(0, target.find('?')) == "/socket";
        const bool hasRoom = work_.viewers_.size() < Server::kMostViewers;
        if (isSocket && hasRoom && work_.isMeant(request) && work_.knowsToken(target)) {
            stream_.expires_never();
            return std::make_shared<Viewer>(stream_.release_socket(), work_, id_)->open(request);
        }
        response_ = work_.answer(request);
        http::async_write(stream_, response_,
                          [self = shared_from_this()](Error error, std::size_t) {
                              if (!error && self->response_.keep_alive()) {
                                  self->read();
                              }
                          });
    }

    beast::tcp_stream stream_;
    Server::Work& work_;
    const int id_;
    beast::flat_buffer buffer_;
    boost::optional<http::request_parser<http::string_body>> parser_;
    Response response_;
};

}  // namespace

Response Server::Work::answer(const Request& request) const {
    Response response{http::status::ok, request.version()};
    const std::string_view target = view(request.target());
    const std::string_view path = target.substr(0, target.find('?'));
    const std::string name(path == "/" ? "index.html"
                                       : path.substr(std::min<std::size_t>(1, path.size())));
    std::ifstream file(isFileName(name) ? files_ + "/" + name : "", std::ios::binary);
    if (!isMeant(request)) {
        response.result(http::status::forbidden);
        response.body() = "This page is at http://" + place_.address + ":" +
                          std::to_string(place_.port) + " for browsers there alone.\n";
    } else if ((path == "/" || path == "/socket") && !knowsToken(target)) {
        response.result(http::status::forbidden);
        response.body() = "The address has a token behind it, which is missing here.\n";
    } else if (request.method() != http::verb::get || path == "/socket" || !file) {
        response.result(http::status::not_found);
        response.body() = "There is nothing here.\n";
    } else {
        response.set(http::field::content_type, typeOf(name));
        response.set("Content-Security-Policy",
                     "default-src 'self'; connect-src 'self'; img-src 'self' data:");
        response.body().assign(std::istreambuf_iterator<char>(file), {});
    }
    response.set(http::field::cache_control, "no-store");
    response.keep_alive(request.keep_alive());
    response.prepare_payload();
    return response;
}

void Server::Work::accept() {
    acceptor_.async_accept([this](Error error, tcp::socket socket) {
        if (!error) {
            std::make_shared<Connection>(std::move(socket), *this, ++lastId_)->read();
            return accept();
        }
        constexpr std::chrono::milliseconds kAfterFailure{100};  // no descriptors left, for one
        retry_.expires_after(kAfterFailure);
        retry_.async_wait([this](Error) { accept(); });
    });
}

Server::Server(int listening, Place place, std::string files, Handlers handlers)
    : work_(std::make_unique<Work>(listening, std::move(place), std::move(files),
                                   std::move(handlers))) {}
Server::~Server() = default;

void Server::run() { work_->context_.run(); }
void Server::end() { work_->context_.stop(); }
void Server::post(std::function<void()> action) { asio::post(work_->context_, std::move(action)); }
void Server::every(std::chrono::milliseconds period, const std::function<void()>& action) {
    work_->every(period, action);
}

void Server::send(int viewer, std::string text) {
    const auto found = work_->viewers_.find(viewer);
    if (found != work_->viewers_.end()) {
        std::shared_ptr<Viewer>(found->second)->say(std::move(text));
    }
}

void Server::changed() {
    const auto viewers = work_->viewers_;
    for (const auto& [id, viewer] : viewers) {
        viewer->stateChanged();
    }
}

}  // namespace page
