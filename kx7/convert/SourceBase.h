// kx7text - what the sources of a pump share in streams, bytes and code units alike (internal).
#ifndef KX7_CONVERT_SOURCEBASE_H
#define KX7_CONVERT_SOURCEBASE_H

#include "kx7/convert/Feed.h"
#include "kx7/convert/Streams.h"

namespace kx7 {

/** What one call is given, how much of it is consumed, and the call's status. */
template <class T>
class Streams::SourceBase {
public:
    size_t consumed() const { return m_feed.consumed(); }
    Status status() const { return m_status; }

    /** Ends the call. */
    bool end(Status status)
    {
        m_status = status;
        return false;
    }

    /** Keeps a character that the end of what the call was given truncates, and ends the call. */
    bool carry()
    {
        if (!m_range.reachesEnd)
            return true;
        m_feed.hold();
        return end(Status::DONE);
    }

protected:
    explicit SourceBase(Feed<T> const& feed) : m_feed(feed) {}

    Feed<T> m_feed;
    typename Feed<T>::Range m_range;
    Status m_status = Status::DONE;
};

}  // namespace kx7

#endif
