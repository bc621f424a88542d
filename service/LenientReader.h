#pragma once

#include "service/JsonParser.h"

#include <QString>

#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

/// Readers of JSON that never fail: what is there and of the wanted type is taken, and all else
/// counts as absent. Of two values under one key the later counts.
namespace vesk::lenient {

/// Takes what a dictionary says under its keys, or a list, which has none.
class Reader {
public:
    Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    virtual ~Reader() = default;

    /// Forgets what it has taken. What is read is absent, unless it follows.
    virtual void begin() = 0;

    /// What the next value stands under.
    virtual void key(QByteArrayView key) = 0;

    virtual void scalar(const JsonScalar& value) = 0;

    /// Who reads the dictionary or the list that comes; nobody where it is of no use.
    [[nodiscard]] virtual Reader* dictionary() = 0;
    [[nodiscard]] virtual Reader* list() = 0;

    /// All has been said.
    virtual void end() = 0;
};

/// Has `reader` take the dictionary that `text` is, and returns whether it is one.
[[nodiscard]] bool read(const QByteArray& text, Reader& reader);

/// A number without a fraction that fits 64 bits: 2 and 2.0, but not 2.5, true or "2".
void take(const JsonScalar& value, std::optional<qint64>& integer);

/// Any number.
void take(const JsonScalar& value, std::optional<double>& number);

/// Only true and false.
void take(const JsonScalar& value, std::optional<bool>& boolean);

void take(const JsonScalar& value, std::optional<QString>& string);

/// A member of a record, and the key that it stands under.
template<typename Record>
struct Field {
    QByteArrayView key;
    std::variant<
        std::optional<qint64> Record::*, std::optional<double> Record::*,
        std::optional<bool> Record::*, std::optional<QString> Record::*>
        member;
};

/// What a dictionary holds besides plain values.
struct Part {
    enum class Kind : quint8 { Dictionary, List };

    QByteArrayView key;
    Kind kind;
    Reader& reader;
};

/// Takes a dictionary into a record and its parts.
template<typename Record>
class RecordReader : public Reader {
public:
    using Fields = std::span<const Field<Record>>;

    /// All but `parts` outlive this.
    RecordReader(Fields fields, Record& record, std::vector<Part> parts = {})
        : fields_(fields), record_(record), parts_(std::move(parts)) {}

    void begin() override {
        record_ = {};
        for (const Part& part : parts_) {
            part.reader.begin();
        }
    }

    void key(QByteArrayView key) override {
        field_ = find(key);
        part_ = nullptr;
        for (const Part& part : parts_) {
            if (part.key == key) {
                part_ = &part;
            }
        }
    }

    void scalar(const JsonScalar& value) override {
        if (field_ != nullptr) {
            std::visit([&](auto member) { take(value, record_.*member); }, field_->member);
        }
        if (part_ != nullptr) {
            part_->reader.begin();
        }
    }

    Reader* dictionary() override { return reader(Part::Kind::Dictionary); }
    Reader* list() override { return reader(Part::Kind::List); }
    void end() override {}

private:
    /// Looked for after the one found last: keys mostly come in one order.
    const Field<Record>* find(QByteArrayView key) {
        for (std::size_t tried = 0; tried < fields_.size(); ++tried) {
            next_ = next_ + 1 < fields_.size() ? next_ + 1 : 0;
            if (fields_[next_].key == key) {
                return &fields_[next_];
            }
        }
        return nullptr;
    }

    /// A value of another kind makes what stands there absent.
    Reader* reader(Part::Kind kind) {
        scalar(nullptr);
        return part_ != nullptr && part_->kind == kind ? &part_->reader : nullptr;
    }

    Fields fields_;
    Record& record_;
    std::vector<Part> parts_;
    std::size_t next_ = 0;
    const Field<Record>* field_ = nullptr; // what the value that comes is for
    const Part* part_ = nullptr;
};

/// Takes a list of dictionaries only, each as one more record: an element of another type makes the
/// whole list absent.
template<typename Record, typename Records>
class ListReader final : public Reader {
public:
    /// Both outlive this.
    ListReader(typename RecordReader<Record>::Fields fields, Records& records)
        : records_(records), element_(fields, *this) {}

    void begin() override {
        records_ = {};
        isAbsent_ = false;
    }

    void key(QByteArrayView /*key*/) override {}
    void scalar(const JsonScalar& /*value*/) override { isAbsent_ = true; }
    Reader* dictionary() override { return &element_; }

    Reader* list() override {
        isAbsent_ = true;
        return nullptr;
    }

    void end() override {
        if (isAbsent_) {
            records_ = {};
        }
    }

private:
    class Element final : public RecordReader<Record> {
    public:
        Element(typename RecordReader<Record>::Fields fields, ListReader& list)
            : RecordReader<Record>(fields, list.record_), list_(list) {}

        void end() override { list_.records_.append(std::move(list_.record_)); }

    private:
        ListReader& list_;
    };

    Records& records_;
    Record record_;
    Element element_;
    bool isAbsent_ = false;
};

} // namespace vesk::lenient
